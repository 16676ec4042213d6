// A stand-in for a node in attribute tests: owns dynamic attributes, counts change notices, and
// writes or reads all its attributes as one XML element.
#pragma once

#include "command/CO_CommandManager.h"
#include "scene/AT_Attr.h"
#include "scene/PIO_XML.h"

#include <QByteArray>
#include <QXmlStreamWriter>

#include <algorithm>
#include <memory>
#include <vector>

class TestOwner : public AT_AttrOwner {
public:
    std::vector<AT_Attr *> statics;  // registered by the test, not owned
    std::vector<std::unique_ptr<AT_Attr>> dynamics;
    CO_CommandManager *manager = nullptr;
    int changes = 0;

    void attrChanged(AT_Attr &) override { ++changes; }
    CO_CommandManager *attrCommandManager() override { return manager; }

    AT_Attr *addDynamicAttr(std::unique_ptr<AT_Attr> attr) override
    {
        if (!attr)
            return nullptr;
        dynamics.push_back(std::move(attr));
        return dynamics.back().get();
    }

    std::unique_ptr<AT_Attr> takeDynamicAttr(AT_Attr *attr) override
    {
        auto it = std::find_if(dynamics.begin(), dynamics.end(),
                               [attr](auto const &a) { return a.get() == attr; });
        if (it == dynamics.end())
            return nullptr;
        std::unique_ptr<AT_Attr> taken = std::move(*it);
        dynamics.erase(it);
        return taken;
    }

    AT_Attr *findAttr(QString const &keyword) const override
    {
        for (AT_Attr *attr : all())
            if (attr->keyword() == keyword)
                return attr;
        return nullptr;
    }

    std::vector<AT_Attr *> all() const
    {
        std::vector<AT_Attr *> attrs = statics;
        for (auto const &attr : dynamics)
            attrs.push_back(attr.get());
        return attrs;
    }

    QByteArray toXml() const
    {
        QByteArray data;
        QXmlStreamWriter writer(&data);
        writer.setAutoFormatting(true);
        writer.writeStartElement(QStringLiteral("node"));
        for (AT_Attr *attr : all())
            attr->writeXml(writer);
        writer.writeEndElement();
        return data;
    }

    bool fromXml(QByteArray const &data, QString *error)
    {
        auto reader = std::make_shared<PIO_XML::AttrListReader>(statics, this);
        return PIO_XML::readDocument(data, reader, QStringLiteral("test.xml"), error);
    }
};
