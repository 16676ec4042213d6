// Reading scene files: a stack of component readers over QXmlStreamReader.
//
// Each component of a file (an attribute, a node, the scene) reads its own element through a
// ComponentReader of its own, so that a new attribute kind brings its reader with it. The driver
// (PIO_XML::read) keeps a stack of readers:
//   - A start element goes to the reader on top, the one whose element holds it. Its
//     startElement gives the reader for the new element's content, which is pushed: itself, a
//     child's reader, or null after reporting an error through errorHandler.
//   - An end element pops that reader, then goes to endElement of the reader that received the
//     start, which passes it on to the child it handed the element to, if any. So a reader that
//     gives a child's reader keeps it as its active child and forwards the end to it.
//   - Text goes to handleCDATA of the reader on top; by default only white space is allowed.
// The root reader receives its own element first, like any child.
//
// Readers change nothing while reading: they keep what they read and register, through
// Context::onSuccess, what to apply. The driver applies it all, in order, only once the whole
// element has been read without error, so a failed read leaves no partial result. Errors name the
// line and what was expected: "<source>:<line>: expected ...".
#pragma once

#include <QString>
#include <QXmlStreamAttributes>

#include <functional>
#include <memory>
#include <vector>

class AT_Attr;
class AT_AttrOwner;
class QByteArray;
class QIODevice;
class QXmlStreamReader;

namespace PIO_XML {

class Context {
public:
    Context(QXmlStreamReader &xml, QString source);
    ~Context();
    Context(Context const &) = delete;
    Context &operator=(Context const &) = delete;

    QXmlStreamReader &xml() const;
    QString const &source() const;
    int line() const;  // line of the token being read

    // Records an error at the current line; the first one stands.
    void fail(QString const &what);
    bool failed() const;
    QString const &error() const;

    // Registers a change to make once the whole read succeeded.
    void onSuccess(std::function<void()> apply);
    // Runs the registered changes in order and forgets them; done by the driver.
    void applyAll();

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

// Readers are held by std::shared_ptr (make them with std::make_shared): a reader gives itself
// with shared_from_this().
class ComponentReader : public std::enable_shared_from_this<ComponentReader> {
public:
    virtual ~ComponentReader();

    // See the file comment. `name` is the element's qualified name.
    virtual std::shared_ptr<ComponentReader> startElement(Context &ctx, QString const &name,
                                                          QXmlStreamAttributes const &attributes) = 0;
    // False after reporting an error. The base forwards to the active child and drops it, and
    // gives true without one.
    virtual bool endElement(Context &ctx, QString const &name);
    // Text of the element on top. The base refuses anything but white space.
    virtual bool handleCDATA(Context &ctx, QString const &text);

    // Reports `what` and gives null, so that `return errorHandler(ctx, ...)` ends a startElement.
    static std::shared_ptr<ComponentReader> errorHandler(Context &ctx, QString const &what);

protected:
    // Hands the element to `child` (kept as the active child) and gives what it gives.
    std::shared_ptr<ComponentReader> startChild(Context &ctx, std::shared_ptr<ComponentReader> child,
                                                QString const &name,
                                                QXmlStreamAttributes const &attributes);
    std::shared_ptr<ComponentReader> const &activeChild() const;

private:
    std::shared_ptr<ComponentReader> activeChild_;  // reader of the child element being read
};

// Reads the element at or after the reader's position with `root`, up to its end. Applies what
// was read only on success; on failure sets `error` (if given) and changes nothing.
bool read(QXmlStreamReader &xml, std::shared_ptr<ComponentReader> const &root,
          QString const &source, QString *error);
// Reads a whole document whose root element goes to `root`.
bool readDocument(QIODevice &device, std::shared_ptr<ComponentReader> const &root,
                  QString const &source, QString *error);
bool readDocument(QByteArray const &data, std::shared_ptr<ComponentReader> const &root,
                  QString const &source, QString *error);

// Reads the attributes of one element: each child element goes to the attribute of that XML
// keyword or keyword among `attrs`. With an `owner`, an element with a "type" attribute is a
// dynamic attribute: it is made by AT_AttrFactorySingleton, read, and added to the owner on
// success. The element itself may carry XML attributes; they are left to the caller.
// An unknown child, an unknown type or a duplicate is an error.
class AttrListReader : public ComponentReader {
public:
    AttrListReader(std::vector<AT_Attr *> attrs, AT_AttrOwner *owner);
    ~AttrListReader() override;
    std::shared_ptr<ComponentReader> startElement(Context &ctx, QString const &name,
                                                  QXmlStreamAttributes const &attributes) override;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

// Number text of scene files: the shortest text that reads back to the same double.
QString numberText(double value);
// A finite double, or false.
bool parseNumber(QString const &text, double &value);

}  // namespace PIO_XML
