#include "ui/widgets/RealServices.h"
#include "ui/widgets/HelpWindow.h"
#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QRegularExpression>
#include <QFontDialog>
#include <QInputDialog>
#include <QMessageBox>

namespace pf = jk::platform;

namespace {

// Dialogs belong to whatever window the user is working in.
QWidget* dialogParent() { return QApplication::activeWindow(); }

QMessageBox::StandardButton toButton(int answer)
{
    switch (answer) {
    case pf::AnswerOk: return QMessageBox::Ok;
    case pf::AnswerCancel: return QMessageBox::Cancel;
    case pf::AnswerYes: return QMessageBox::Yes;
    case pf::AnswerNo: return QMessageBox::No;
    case pf::AnswerRetry: return QMessageBox::Retry;
    default: return QMessageBox::NoButton;
    }
}

class MessageBox final : public pf::IMessageBox {
public:
    int show(const QString& text, const QString& title, pf::Icon icon, pf::Buttons buttons,
             int defaultAnswer) override
    {
        QMessageBox::Icon qicon = QMessageBox::NoIcon;
        switch (icon) {
        case pf::Icon::None: break;
        case pf::Icon::Information: qicon = QMessageBox::Information; break;
        case pf::Icon::Warning: qicon = QMessageBox::Warning; break;
        case pf::Icon::Critical: qicon = QMessageBox::Critical; break;
        case pf::Icon::Question: qicon = QMessageBox::Question; break;
        }
        QMessageBox::StandardButtons set = QMessageBox::Ok;
        switch (buttons) {
        case pf::Buttons::Ok: set = QMessageBox::Ok; break;
        case pf::Buttons::OkCancel: set = QMessageBox::Ok | QMessageBox::Cancel; break;
        case pf::Buttons::YesNo: set = QMessageBox::Yes | QMessageBox::No; break;
        case pf::Buttons::YesNoCancel: set = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel; break;
        case pf::Buttons::RetryCancel: set = QMessageBox::Retry | QMessageBox::Cancel; break;
        }
        const QString caption = title.isEmpty() ? QGuiApplication::applicationDisplayName() : title;
        QMessageBox box(qicon, caption, text, set, dialogParent());
        // Message texts come from files the user may edit: never rich text.
        box.setTextFormat(Qt::PlainText);
        const QMessageBox::StandardButton def = toButton(defaultAnswer);
        if (def != QMessageBox::NoButton && (set & def)) box.setDefaultButton(def);
        box.exec();

        switch (box.standardButton(box.clickedButton())) {
        case QMessageBox::Ok: return pf::AnswerOk;
        case QMessageBox::Cancel: return pf::AnswerCancel;
        case QMessageBox::Yes: return pf::AnswerYes;
        case QMessageBox::No: return pf::AnswerNo;
        case QMessageBox::Retry: return pf::AnswerRetry;
        default: break;
        }
        // Closed without a button: the box's escape answer.
        switch (buttons) {
        case pf::Buttons::Ok: return pf::AnswerOk;
        case pf::Buttons::YesNo: return pf::AnswerNo;
        default: return pf::AnswerCancel;
        }
    }

    void about(const QString& title, const QString& text) override
    {
        QMessageBox::about(dialogParent(), title, text);
    }
};

QString withDefaultSuffix(const QString& name, QString suffix)
{
    if (name.isEmpty() || suffix.isEmpty()) return name;
    if (suffix.startsWith(u'.')) suffix.remove(0, 1);
    if (!QFileInfo(name).suffix().isEmpty()) return name;
    return name + u'.' + suffix;
}

class FileDialogs final : public pf::IFileDialogs {
public:
    QString openFile(const QString& title, const QString& folder, const QString& filter) override
    {
        return QFileDialog::getOpenFileName(dialogParent(), title, folder, filter);
    }

    QString saveFile(const QString& title, const QString& folder, const QString& filter,
                     const QString& defaultSuffix) override
    {
        // A dialog object rather than getSaveFileName so the overwrite
        // question is asked about the name with its suffix added.
        QFileDialog dlg(dialogParent(), title, folder, filter);
        dlg.setAcceptMode(QFileDialog::AcceptSave);
        dlg.setFileMode(QFileDialog::AnyFile);
        QString suffix = defaultSuffix;
        if (suffix.startsWith(u'.')) suffix.remove(0, 1);
        dlg.setDefaultSuffix(suffix);
        // A name typed without an extension takes the chosen filter's.
        QObject::connect(&dlg, &QFileDialog::filterSelected, &dlg, [&dlg, &suffix](const QString& chosen) {
            static const QRegularExpression firstPattern(QStringLiteral("\\*\\.(\\w+)"));
            const QRegularExpressionMatch m = firstPattern.match(chosen);
            if (!m.hasMatch()) return;
            suffix = m.captured(1);
            dlg.setDefaultSuffix(suffix);
        });
        if (dlg.exec() != QDialog::Accepted) return {};
        return withDefaultSuffix(dlg.selectedFiles().value(0), suffix);
    }
};

class FontDialog final : public pf::IFontDialog {
public:
    std::optional<QFont> chooseFont(const QFont& initial, const QString& title) override
    {
        bool ok = false;
        const QFont f = QFontDialog::getFont(&ok, initial, dialogParent(), title);
        if (!ok) return std::nullopt;
        return f;
    }
};

class ColorDialog final : public pf::IColorDialog {
public:
    std::optional<QColor> chooseColor(const QColor& initial, const QString& title) override
    {
        const QColor c = QColorDialog::getColor(initial, dialogParent(), title);
        if (!c.isValid()) return std::nullopt;
        return c;
    }
};

class InputBox final : public pf::IInputBox {
public:
    std::optional<QString> getText(const QString& prompt, const QString& title,
                                   const QString& initial) override
    {
        bool ok = false;
        const QString text =
            QInputDialog::getText(dialogParent(), title, prompt, QLineEdit::Normal, initial, &ok);
        if (!ok) return std::nullopt;
        return text;
    }
};

class Help final : public pf::IHelp {
public:
    void show(const QString& page) override { HelpWindow::showShared(page); }
    void quit() override { HelpWindow::closeShared(); }
};

}  // namespace

struct RealServices::Impl {
    MessageBox messages;
    FileDialogs files;
    FontDialog fonts;
    ColorDialog colors;
    InputBox input;
    Help help;
    pf::SystemServices system;
};

RealServices::RealServices() : d(std::make_unique<Impl>()) {}

RealServices::~RealServices()
{
    // Never leave the installed services pointing at freed objects.
    if (pf::services().messages == &d->messages) pf::install({});
}

pf::Services RealServices::services() const
{
    pf::Services s;
    s.messages = &d->messages;
    s.files = &d->files;
    s.fonts = &d->fonts;
    s.colors = &d->colors;
    s.input = &d->input;
    d->system.fill(s);
    s.help = &d->help;
    return s;
}

void installRealServices()
{
    static RealServices real;
    pf::install(real.services());
}
