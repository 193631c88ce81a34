#include "model/AppContext.h"
#include "model/Formats.h"
#include <memory>

namespace jk {

namespace {
std::unique_ptr<AppContext> g_app = std::make_unique<AppContext>();
}

const AppContext& app() { return *g_app; }
AppContext& appSetup() { return *g_app; }
void resetApp() { g_app = std::make_unique<AppContext>(); }

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

std::array<QString, kMessageCount> Texts::builtInMessages()
{
    std::array<QString, kMessageCount> m;
    for (int i = kFirstAppendedMessage; i < kMessageCount; ++i)
        m[std::size_t(i)] = QString::fromUtf8(builtInMessage(Msg(i)));
    return m;
}

QString Texts::formatName(int code) const
{
    const int i = formatNameIndex(code);
    return i < 0 ? QString() : formatNames[std::size_t(i)];
}

}  // namespace jk
