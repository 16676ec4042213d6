#include "scene/PIO_XML.h"

#include "scene/AT_Attr.h"
#include "scene/AT_AttrFactory.h"
#include "base/UT_StorableText.h"

#include <QBuffer>
#include <QLocale>
#include <QStringList>
#include <QXmlStreamReader>

#include <cmath>
#include <set>

namespace PIO_XML {

// ---- Context ----

struct Context::Impl {
    QXmlStreamReader &xml;
    QString source;
    QString error;
    std::vector<std::function<void()>> pending;  // applied in order on success
};

Context::Context(QXmlStreamReader &xml, QString source)
    : d_(std::make_unique<Impl>(Impl{xml, std::move(source), QString(), {}}))
{
}

Context::~Context() = default;
QXmlStreamReader &Context::xml() const { return d_->xml; }
QString const &Context::source() const { return d_->source; }
int Context::line() const { return static_cast<int>(d_->xml.lineNumber()); }

void Context::fail(QString const &what)
{
    if (!d_->error.isEmpty())
        return;
    QString const where = d_->source.isEmpty() ? QStringLiteral("line %1").arg(line())
                                               : QStringLiteral("%1:%2").arg(d_->source).arg(line());
    d_->error = where + QStringLiteral(": ") + what;
}

bool Context::failed() const { return !d_->error.isEmpty(); }
QString const &Context::error() const { return d_->error; }
void Context::onSuccess(std::function<void()> apply) { d_->pending.push_back(std::move(apply)); }

void Context::applyAll()
{
    std::vector<std::function<void()>> pending;
    pending.swap(d_->pending);
    for (auto &apply : pending)
        apply();
}

// ---- ComponentReader ----

ComponentReader::~ComponentReader() = default;

bool ComponentReader::endElement(Context &ctx, QString const &name)
{
    if (!activeChild_)
        return true;
    std::shared_ptr<ComponentReader> const child = std::move(activeChild_);
    activeChild_.reset();
    return child->endElement(ctx, name);
}

bool ComponentReader::handleCDATA(Context &ctx, QString const &text)
{
    if (text.trimmed().isEmpty())
        return true;
    ctx.fail(QStringLiteral("expected an element, found text \"%1\"").arg(text.trimmed().left(40)));
    return false;
}

std::shared_ptr<ComponentReader> ComponentReader::errorHandler(Context &ctx, QString const &what)
{
    ctx.fail(what);
    return nullptr;
}

std::shared_ptr<ComponentReader> ComponentReader::startChild(Context &ctx,
                                                             std::shared_ptr<ComponentReader> child,
                                                             QString const &name,
                                                             QXmlStreamAttributes const &attributes)
{
    activeChild_ = std::move(child);
    if (!activeChild_)
        return errorHandler(ctx, QStringLiteral("expected a reader for <%1>").arg(name));
    return activeChild_->startElement(ctx, name, attributes);
}

std::shared_ptr<ComponentReader> const &ComponentReader::activeChild() const { return activeChild_; }

// ---- the driver ----

namespace {

// False, with the context failed, when a value of `attributes` holds what no file can hold again
// (a lone surrogate of a UTF-16 file, say): such a file would read and then never save.
bool storableAttributes(Context &ctx, QString const &element, QXmlStreamAttributes const &attributes)
{
    for (QXmlStreamAttribute const &attribute : attributes)
        if (!UT_isStorableText(attribute.value().toString())) {
            ctx.fail(QStringLiteral("expected text without %1 in \"%2\" of <%3>")
                         .arg(UT_storableTextRule(), attribute.qualifiedName().toString(), element));
            return false;
        }
    return true;
}

// Reads the element at or after the current token, without applying anything.
bool readElement(Context &ctx, std::shared_ptr<ComponentReader> const &root)
{
    QXmlStreamReader &xml = ctx.xml();
    while (!xml.isStartElement() && !xml.atEnd())
        xml.readNext();
    if (!root) {
        ctx.fail(QStringLiteral("expected a reader for the element"));
        return false;
    }
    std::vector<std::shared_ptr<ComponentReader>> stack{root};
    QStringList open;  // names of the open elements, outermost first
    for (; !xml.hasError(); xml.readNext()) {
        switch (xml.tokenType()) {
        case QXmlStreamReader::StartElement: {
            QString const name = xml.qualifiedName().toString();
            if (!storableAttributes(ctx, name, xml.attributes()))
                return false;
            std::shared_ptr<ComponentReader> next = stack.back()->startElement(ctx, name, xml.attributes());
            if (!next) {
                if (!ctx.failed())
                    ctx.fail(QStringLiteral("expected a known element, found <%1>").arg(name));
                return false;
            }
            stack.push_back(std::move(next));
            open << name;
            break;
        }
        case QXmlStreamReader::EndElement: {
            QString const name = open.takeLast();
            stack.pop_back();
            if (!stack.back()->endElement(ctx, name)) {
                if (!ctx.failed())
                    ctx.fail(QStringLiteral("expected valid content in <%1>").arg(name));
                return false;
            }
            if (open.isEmpty())
                return true;
            break;
        }
        case QXmlStreamReader::Characters:
            if (!UT_isStorableText(xml.text().toString())) {
                ctx.fail(QStringLiteral("expected text without %1 inside <%2>").arg(UT_storableTextRule(), open.value(open.size() - 1)));
                return false;
            }
            if (!stack.back()->handleCDATA(ctx, xml.text().toString())) {
                if (!ctx.failed())
                    ctx.fail(QStringLiteral("expected no text inside <%1>").arg(open.value(open.size() - 1)));
                return false;
            }
            break;
        case QXmlStreamReader::EndDocument:
            ctx.fail(open.isEmpty() ? QStringLiteral("expected an element, found the end of the file")
                                    : QStringLiteral("expected </%1>, found the end of the file").arg(open.last()));
            return false;
        default:
            break;  // comments, processing instructions, document type
        }
    }
    if (xml.error() == QXmlStreamReader::PrematureEndOfDocumentError)
        ctx.fail(open.isEmpty() ? QStringLiteral("expected an element, found the end of the file")
                                : QStringLiteral("expected </%1>, found the end of the file").arg(open.last()));
    else if (!open.isEmpty())
        ctx.fail(QStringLiteral("expected </%1> or well-formed content: %2").arg(open.last(), xml.errorString()));
    else
        ctx.fail(QStringLiteral("expected well-formed XML: %1").arg(xml.errorString()));
    return false;
}

bool finish(Context &ctx, bool ok, QString *error)
{
    if (!ok) {
        if (error)
            *error = ctx.error();
        return false;
    }
    ctx.applyAll();
    if (error)
        error->clear();
    return true;
}

bool readWholeDocument(QXmlStreamReader &xml, std::shared_ptr<ComponentReader> const &root,
                       QString const &source, QString *error)
{
    Context ctx(xml, source);
    bool ok = readElement(ctx, root);
    // Nothing but white space, comments and processing instructions may follow the root element.
    while (ok && !xml.atEnd()) {
        xml.readNext();
        if (xml.hasError() && xml.error() != QXmlStreamReader::PrematureEndOfDocumentError) {
            ctx.fail(QStringLiteral("expected the end of the file: %1").arg(xml.errorString()));
            ok = false;
        } else if (xml.isStartElement() || (xml.isCharacters() && !xml.isWhitespace())) {
            ctx.fail(QStringLiteral("expected the end of the file after the root element"));
            ok = false;
        }
    }
    return finish(ctx, ok, error);
}

}  // namespace

bool read(QXmlStreamReader &xml, std::shared_ptr<ComponentReader> const &root,
          QString const &source, QString *error)
{
    Context ctx(xml, source);
    bool const ok = readElement(ctx, root);
    return finish(ctx, ok, error);
}

bool readDocument(QIODevice &device, std::shared_ptr<ComponentReader> const &root,
                  QString const &source, QString *error)
{
    QXmlStreamReader xml(&device);
    return readWholeDocument(xml, root, source, error);
}

bool readDocument(QByteArray const &data, std::shared_ptr<ComponentReader> const &root,
                  QString const &source, QString *error)
{
    QXmlStreamReader xml(data);
    return readWholeDocument(xml, root, source, error);
}

// ---- AttrListReader ----

struct AttrListReader::Impl {
    std::vector<AT_Attr *> attrs;
    AT_AttrOwner *owner;
    QString own;                // the element's name, once started
    std::set<QString> seen;     // child elements read so far
};

AttrListReader::AttrListReader(std::vector<AT_Attr *> attrs, AT_AttrOwner *owner)
    : d_(std::make_unique<Impl>(Impl{std::move(attrs), owner, QString(), {}}))
{
}

AttrListReader::~AttrListReader() = default;

std::shared_ptr<ComponentReader> AttrListReader::startElement(Context &ctx, QString const &name,
                                                              QXmlStreamAttributes const &attributes)
{
    if (d_->own.isEmpty()) {
        d_->own = name;
        return shared_from_this();
    }
    if (!d_->seen.insert(name).second)
        return errorHandler(ctx, QStringLiteral("expected <%1> once inside <%2>, found it again").arg(name, d_->own));
    QString const type = attributes.value(QLatin1String("type")).toString();

    if (d_->owner && !type.isEmpty()) {
        auto &factory = AT_AttrFactorySingleton::instance();
        if (!factory.isRegistered(type))
            return errorHandler(ctx, QStringLiteral("expected a registered attribute type for <%1>, found \"%2\"").arg(name, type));
        if (d_->owner->findAttr(name))
            return errorHandler(ctx, QStringLiteral("expected a new attribute name for dynamic <%1>, found an existing one").arg(name));
        AT_AttrMeta meta(name, QString());
        auto &metas = AT_AttrMetaFactorySingleton::instance();
        if (metas.isRegistered(type)) {
            meta = metas.meta(type);
            meta.setKeyword(name);
            meta.setXmlKeyword(QString());
        }
        std::shared_ptr<std::unique_ptr<AT_Attr>> made =
            std::make_shared<std::unique_ptr<AT_Attr>>(factory.create(type, d_->owner, meta));
        if (!*made)
            return errorHandler(ctx, QStringLiteral("expected type \"%1\" to make attribute <%2>").arg(type, name));
        AT_AttrOwner *owner = d_->owner;
        ctx.onSuccess([owner, made] { owner->addDynamicAttr(std::move(*made)); });
        return startChild(ctx, (*made)->componentReader(), name, attributes);
    }

    AT_Attr *found = nullptr;
    for (AT_Attr *attr : d_->attrs)
        if (!name.isEmpty() && (attr->xmlKeyword() == name || attr->keyword() == name))
            found = found ? found : attr;
    if (!found) {
        QStringList names;
        for (AT_Attr *attr : d_->attrs)
            names << QStringLiteral("<%1>").arg(attr->xmlKeyword());
        QString const expected = names.isEmpty() ? QStringLiteral("no element") : QStringLiteral("one of ") + names.join(QStringLiteral(", "));
        return errorHandler(ctx, QStringLiteral("expected %1 inside <%2>, found <%3>").arg(expected, d_->own, name));
    }
    if (!type.isEmpty() && type != found->typeName())
        return errorHandler(ctx, QStringLiteral("expected type \"%1\" for <%2>, found \"%3\"").arg(found->typeName(), name, type));
    return startChild(ctx, found->componentReader(), name, attributes);
}

// ---- numbers ----

QString numberText(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

bool parseNumber(QString const &text, double &value)
{
    bool ok = false;
    double const v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v))
        return false;
    value = v;
    return true;
}

}  // namespace PIO_XML
