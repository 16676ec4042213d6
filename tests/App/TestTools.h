// Helpers of the application's tests: a test's own tool registered with the tool factory, and
// the bytes of a file.
#pragma once

#include "tool/TO_AbstractTool.h"
#include "tool/TO_ToolFactory.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>

// Registers a test's own tool class with the tool factory, once per name.
template <class Tool>
CX_ToolIds::ID registerTestTool(QString const &name)
{
    class Generator : public TO_ToolFactory::ToolGenerator {
    public:
        std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override { return std::make_unique<Tool>(context); }
    };
    CX_ToolIds::ID const known = TO_ToolFactory::instance().idForName(name);
    if (known != CX_ToolIds::None)
        return known;
    return TO_ToolFactory::instance().registerTool({0, name, name, QString(), 0, CX_ToolIds::None},
                                                   std::make_unique<Generator>());
}

// The bytes of a file; empty when it cannot be read.
inline QByteArray readAll(QString const &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
