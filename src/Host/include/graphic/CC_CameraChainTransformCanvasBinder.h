// The camera chain of one view bound to the canvas the view paints on.
//
// A view owns one binder; tools and painters reach the view's matrices and canvas through it. The
// model matrix changes often while a view paints (one per module, drawing or manipulator); open a
// Scope around such changes so that whatever is painted next finds the matrices as they were.
#pragma once

#include "graphic/CameraTransformChain.h"

class VS_Canvas;

class CC_CameraChainTransformCanvasBinder {
public:
    // `canvas` is not owned and may be null (a binder that maps but cannot paint); it must outlive
    // the binder or be replaced with setCanvas first.
    explicit CC_CameraChainTransformCanvasBinder(VS_Canvas *canvas = nullptr) : canvas_(canvas) {}

    VS_Canvas *canvas() const { return canvas_; }
    void setCanvas(VS_Canvas *canvas) { canvas_ = canvas; }

    Math::CameraTransformChain const &cameraTransformChain() const { return chain_; }

    Math::Matrix4x4 const &modelMatrix() const { return chain_.modelMatrix(); }
    Math::Matrix4x4 const &viewMatrix() const { return chain_.viewMatrix(); }
    Math::Matrix4x4 const &projectionMatrix() const { return chain_.projectionMatrix(); }

    // Each setter refuses a matrix with an element that is not finite: false, nothing changed.
    bool setModelMatrix(Math::Matrix4x4 const &m) { return chain_.setModelMatrix(m); }
    bool setViewMatrix(Math::Matrix4x4 const &m) { return chain_.setViewMatrix(m); }
    bool setProjectionMatrix(Math::Matrix4x4 const &m) { return chain_.setProjectionMatrix(m); }
    bool setViewport(int width, int height) { return chain_.setViewport(width, height); }
    bool setOrthographicProjection(double pixelsPerUnit) { return chain_.setOrthographicProjection(pixelsPerUnit); }

    // Multiplies `m` onto the current model matrix, on the right: points of the new model frame
    // go through `m` first, then through the model matrix as it was.
    bool transformModel(Math::Matrix4x4 const &m) { return chain_.setModelMatrix(chain_.modelMatrix() * m); }

    // Saves the binder's matrices and viewport at construction and puts them back at destruction.
    // Scopes nest; the canvas is not part of what is saved.
    class Scope {
    public:
        explicit Scope(CC_CameraChainTransformCanvasBinder &binder) : binder_(binder), saved_(binder.chain_) {}
        ~Scope() { binder_.chain_ = saved_; }
        Scope(Scope const &) = delete;
        Scope &operator=(Scope const &) = delete;

    private:
        CC_CameraChainTransformCanvasBinder &binder_;
        Math::CameraTransformChain saved_;
    };

private:
    Math::CameraTransformChain chain_;
    VS_Canvas *canvas_ = nullptr;  // not owned
};
