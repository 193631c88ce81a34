#include "model/Global.h"
#include <memory>

namespace jk {

namespace {
std::unique_ptr<Global> g_state = std::make_unique<Global>();
}

Global& G() { return *g_state; }

void resetGlobal() { g_state = std::make_unique<Global>(); }

void Global::createTables(TableSizing when)
{
    freeText.reset(100);
    pageText.reset(50);
    pictures.reset(50);
    switch (when) {
    case TableSizing::StartUp: charFields.reset(100); numFields.reset(50); break;
    case TableSizing::NewProject: charFields.reset(100); numFields.reset(100); break;
    case TableSizing::OpenProject: charFields.reset(50); numFields.reset(50); break;
    }
    backgrounds.fill(BackgroundRecord{});
}

QString Texts::msgOr(Msg m, const char* fallback) const
{
    const QString& s = msg(m);
    return s.isEmpty() ? QString::fromUtf8(fallback) : s;
}

QString Texts::tipOr(int i, const char* fallback) const
{
    const QString& s = toolTips.at(std::size_t(i));
    return s.isEmpty() ? QString::fromUtf8(fallback) : s;
}

void Global::resetProject()
{
    spineText.clear();
    spineNumberText.clear();
    spineTitle.clear();
    spineFont = SpineFont{};
    projectModified = false;
    currentNumber = 1;
    compositionCode = 0;
}

int formatNameIndex(int formatCode)
{
    switch (formatCode) {
    case FmtSimple: return 0;
    case FmtDouble: return 1;
    case FmtJacket: return 2;
    case FmtCdRom: return 3;
    case FmtInside: return 4;
    default: return -1;
    }
}

int compositionWeight(int formatCode)
{
    switch (formatCode) {
    case FmtDouble: return 1;
    case FmtCdRom: return 2;
    case FmtSimple: return 4;
    case FmtInside: return 8;
    case FmtJacket: return 16;
    default: return 0;
    }
}

}  // namespace jk
