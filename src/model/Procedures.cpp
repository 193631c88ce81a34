#include "model/Procedures.h"
#include "platform/Services.h"
#include "model/Global.h"
#include "file/Paths.h"
#include "model/Shell.h"

namespace jk {

namespace {
IShell* g_shell = nullptr;
}
IShell* shell() { return g_shell; }
void setShell(IShell* s) { g_shell = s; }

void twoSecondPause()
{
    if (auto* clock = platform::services().clock) clock->pause(2000);
}

int printerAvailabilityRule()
{
    Global& g = G();
    g.printerAvailable = 0;
    if (auto* p = platform::services().printers) {
        for (const QString& name : p->printers())
            if (!name.isEmpty()) g.printerAvailable = 1;
    }
    if (g_shell) g_shell->setPrintCommandsEnabled(g.printerAvailable == 1);
    return g.printerAvailable;
}

void helpSetUp(qint64 ownerWindow)
{
    Global& g = G();
    g.helpOwner = ownerWindow;
    g.helpFile = paths::dataDir() + QStringLiteral("/help/index.html");
    g.helpPlacement = {26, 256, 256, 512, 512};
}

void helpShutDown()
{
    if (auto* h = platform::services().help) h->quit();
}

void spinePropagation()
{
    Global& g = G();
    if (g.spineText.isEmpty()) g.spineText = QStringLiteral(" ");
    if (g.spineNumberText.isEmpty()) g.spineNumberText = QStringLiteral(" ");
    const QString line = g.spineText + u' ' + g.spineNumberText;
    if (g_shell) {
        const auto sheets = g_shell->sheets();
        for (auto it = sheets.rbegin(); it != sheets.rend(); ++it) (*it)->setSpineCaption(line);
    }
    g.spineTitle = line;
    if (g_shell) g_shell->refresh();
}

StepResult stepRule(const QString& boxText)
{
    bool ok = false;
    const int v = boxText.trimmed().toInt(&ok);
    if (!ok || v < 1 || v > 999) return {10, true};
    return {v, false};
}

}  // namespace jk
