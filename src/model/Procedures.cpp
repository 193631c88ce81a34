#include "model/Procedures.h"
#include "platform/Services.h"

namespace jk {

bool printerAvailable()
{
    if (auto* p = platform::services().printers)
        for (const QString& name : p->printers())
            if (!name.isEmpty()) return true;
    return false;
}

StepResult stepRule(const QString& boxText)
{
    bool ok = false;
    const int v = boxText.trimmed().toInt(&ok);
    if (!ok || v < 1 || v > 999) return {10, true};
    return {v, false};
}

}  // namespace jk
