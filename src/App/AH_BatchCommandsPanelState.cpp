// Batch commands that check the state of a panel's widgets beyond what they show: expect-enabled.
#include "AH_BatchCommands.h"

#include <QWidget>

using namespace AH_BatchWords;

namespace {

bool expectEnabled(AH_BatchContext &c, QStringList const &a, QString &why)
{
    QWidget *w = c.panelWidget(a[0], why);
    if (!w)
        return false;
    bool const wanted = a[1] == QLatin1String("true");
    if (w->isEnabled() == wanted)
        return true;
    why = QStringLiteral("expected the widget \"%1\" to be %2").arg(a[0], wanted ? QStringLiteral("enabled") : QStringLiteral("disabled"));
    return false;
}

} // namespace

void AH_AddPanelStateCommands(AH_BatchCommandList &table)
{
    table.push_back({QStringLiteral("expect-enabled"), 2, 2, QStringLiteral("NAME true|false"),
                     oneOf(1, {QStringLiteral("true"), QStringLiteral("false")}),
                     expectEnabled});
}
