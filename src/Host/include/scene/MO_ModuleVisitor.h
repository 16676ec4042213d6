// Double dispatch over the module classes: MO_Module::accept calls the visit of the module's
// own class.
#pragma once

class BendyBoneModule;
class CurveModule;
class GameBoneModule;
class MiniPegModule;
class MO_ElementModule;
class MO_Module;
class MO_PegModule;
class MO_SwitchModule;
class OffsetModule;

// Every visit does nothing unless overridden.
class MO_ModuleVisitor {
public:
    virtual ~MO_ModuleVisitor() = default;
    virtual void visit(MO_PegModule &) {}
    virtual void visit(MO_ElementModule &) {}
    virtual void visit(MO_SwitchModule &) {}
    virtual void visit(BendyBoneModule &) {}
    virtual void visit(GameBoneModule &) {}
    virtual void visit(CurveModule &) {}
    virtual void visit(OffsetModule &) {}
    virtual void visit(MiniPegModule &) {}
    // Modules of a class without a visit of its own.
    virtual void visit(MO_Module &) {}
};

// Every visit not overridden falls back on visitModule.
class MO_AbstractModuleVisitorWithModuleFallback : public MO_ModuleVisitor {
public:
    virtual void visitModule(MO_Module &module) = 0;
    void visit(MO_PegModule &m) override;
    void visit(MO_ElementModule &m) override;
    void visit(MO_SwitchModule &m) override;
    void visit(BendyBoneModule &m) override;
    void visit(GameBoneModule &m) override;
    void visit(CurveModule &m) override;
    void visit(OffsetModule &m) override;
    void visit(MiniPegModule &m) override;
    void visit(MO_Module &m) override { visitModule(m); }
};
