// Helpers of the skeleton tests: modules in a scene, metadata made the way the tool makes it,
// single attributes written to and read from XML, and a listener that counts tells.
#pragma once

#include "skeleton/IKMetaData.h"

#include "scene/TUScene.h"

#include <QByteArray>
#include <QXmlStreamWriter>

#include <gtest/gtest.h>

namespace SkeletonTest {

// Adds a new node of type T to the scene's root group under `name`.
template <class T>
T *add(TUScene &scene, QString const &name)
{
    auto node = UT_MakeShared<T>();
    node->setInstanceName(name);
    return static_cast<T *>(scene.getRootGroup()->addNode(node));
}

// Creates the module's IKMetaData through the host's creation command, as a scene or the tool
// would; gives it, or null.
inline IKMetaData *addMetaData(MO_Module *module, CO_CommandManager &manager)
{
    manager.execute(std::make_unique<tu_node::CreateAttrCmd>(module, IKMetaData::metaForKeyword(IKMetaData::Keyword()),
                                                             IKMetaData::TypeString(), false));
    return IKToolUtil::getIKMetaDataForModule(module);
}

inline JointAttr *jointOf(MO_Module *module)
{
    IKMetaData *metaData = IKToolUtil::getIKMetaDataForModule(module);
    return metaData ? metaData->skeletonMetaData()->jointAttr() : nullptr;
}

// The attribute's element as XML text.
inline QByteArray toXml(AT_Attr const &attr)
{
    QByteArray data;
    QXmlStreamWriter writer(&data);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    attr.writeXml(writer);
    writer.writeEndDocument();
    return data;
}

// Reads `xml` into `attr` with its own reader; gives the error, empty on success.
inline QString fromXml(AT_Attr &attr, QByteArray const &xml)
{
    QString error;
    if (!PIO_XML::readDocument(xml, attr.componentReader(), QStringLiteral("test"), &error) && error.isEmpty())
        return QStringLiteral("failed without a message");
    return error;
}

// Counts the tells of the tellers it listens to.
class TellCounter : public TUListener {
public:
    explicit TellCounter(TUTeller *teller) { phone(teller); }
    void callBack(TUTeller *) override { ++tells; }
    int tells = 0;
};

} // namespace SkeletonTest
