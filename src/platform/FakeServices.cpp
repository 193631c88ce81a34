#include "platform/FakeServices.h"
#include <QCoreApplication>
#include <QFileInfo>

namespace pf = jk::platform;

namespace {

template <typename T>
std::optional<T> takeFront(std::deque<T>& queue)
{
    if (queue.empty()) return std::nullopt;
    T value = std::move(queue.front());
    queue.pop_front();
    return value;
}

// What Esc or the close button gives.
int dismissAnswer(pf::Buttons buttons)
{
    switch (buttons) {
    case pf::Buttons::Ok: return pf::AnswerOk;
    case pf::Buttons::YesNo: return pf::AnswerNo;
    case pf::Buttons::OkCancel:
    case pf::Buttons::YesNoCancel:
    case pf::Buttons::RetryCancel: break;
    }
    return pf::AnswerCancel;
}

bool fail(QString* error, const QString& why)
{
    if (error) *error = why;
    return false;
}

}  // namespace

int FakeServices::Messages::show(const QString& text, const QString& title, pf::Icon icon,
                                 pf::Buttons buttons, int defaultAnswer)
{
    int answer = 0;
    if (auto queued = takeFront(answers))
        answer = *queued;
    else
        answer = defaultAnswer != 0 ? defaultAnswer : dismissAnswer(buttons);
    calls.append({text, title, icon, buttons, defaultAnswer, answer});
    return answer;
}

void FakeServices::Messages::about(const QString& title, const QString& text)
{
    aboutTitle = title;
    aboutText = text;
    ++aboutCalls;
}

QString FakeServices::Files::openFile(const QString& title, const QString& folder, const QString& filter)
{
    openCalls.append({title, folder, filter, QString()});
    return takeFront(openAnswers).value_or(QString());
}

QString FakeServices::Files::saveFile(const QString& title, const QString& folder, const QString& filter,
                                      const QString& defaultSuffix)
{
    saveCalls.append({title, folder, filter, defaultSuffix});
    QString name = takeFront(saveAnswers).value_or(QString());
    QString suffix = defaultSuffix;
    if (suffix.startsWith(u'.')) suffix.remove(0, 1);
    if (!name.isEmpty() && !suffix.isEmpty() && QFileInfo(name).suffix().isEmpty())
        name += u'.' + suffix;
    return name;
}

std::optional<QFont> FakeServices::Fonts::chooseFont(const QFont& initial, const QString& title)
{
    calls.append({initial, title});
    return takeFront(answers).value_or(std::nullopt);
}

std::optional<QColor> FakeServices::Colors::chooseColor(const QColor& initial, const QString& title)
{
    calls.append({initial, title});
    return takeFront(answers).value_or(std::nullopt);
}

std::optional<QString> FakeServices::Input::getText(const QString& prompt, const QString& title,
                                                   const QString& initial)
{
    calls.append({prompt, title, initial});
    return takeFront(answers).value_or(std::nullopt);
}

void FakeServices::Clock::pause(int ms)
{
    const int step = qMax(0, ms);
    pauses.append(ms);
    pausedMs += step;
    current = current.addMSecs(step);
    // Code that pauses expects the screen to update meanwhile.
    QCoreApplication::processEvents();
}

bool FakeServices::Printers::setDefaultPrinter(const QString& name, QString* error)
{
    setCalls.append(name);
    if (failSet) return fail(error, failError);
    if (!list.contains(name)) return fail(error, QStringLiteral("The printer \"%1\" is not known.").arg(name));
    defaultName = name;
    return true;
}

bool FakeServices::Programs::start(const QString& program, const QStringList& args, QString* error)
{
    return launch(program, args, false, error);
}

bool FakeServices::Programs::runAndWait(const QString& program, const QStringList& args, QString* error)
{
    return launch(program, args, true, error);
}

bool FakeServices::Programs::launch(const QString& program, const QStringList& args, bool wait, QString* error)
{
    Call call{program, args, wait, false};
    bool ok = true;
    if (failStart)
        ok = fail(error, failError);
    else if (!existing.contains(program))
        ok = fail(error, QStringLiteral("The program %1 was not found.").arg(program));
    call.ok = ok;
    calls.append(call);
    if (ok) started.append(program);
    return ok;
}

FakeServices::~FakeServices()
{
    // Tests delete their fake between cases: leave nothing dangling.
    if (pf::services().clock == &clock) pf::install({});
}

pf::Services FakeServices::services()
{
    pf::Services s;
    s.messages = &messages;
    s.files = &files;
    s.fonts = &fonts;
    s.colors = &colors;
    s.input = &input;
    s.clock = &clock;
    s.printers = &printers;
    s.programs = &programs;
    s.desktop = &desktop;
    s.help = &help;
    return s;
}

void FakeServices::install() { pf::install(services()); }
