#include "ui/dialogs/TextBlockDialog.h"
#include "platform/Services.h"
#include "model/Colors.h"
#include "model/AppContext.h"
#include "render/SheetObjects.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include "sources/disc/CdPlayerDatabase.h"
#include "ui/widgets/DriveFolderFile.h"
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QScopeGuard>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSaveFile>
#include <QScreen>
#include <QStringDecoder>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextOption>
#include <QVBoxLayout>
#include <cmath>

namespace pf = jk::platform;

namespace {

constexpr jk::i32 kWhite = 0xFFFFFF;

// Colours are kept as Windows values (red in the low byte); Qt sees QColor.
QFont previewFont(const QString& name, double points, bool bold, bool italic, bool underline,
                  bool strike)
{
    QFont f(name);
    if (name.compare(QLatin1String("Fixedsys"), Qt::CaseInsensitive) == 0)
        f.setStyleHint(QFont::TypeWriter);
    f.setPointSizeF(points > 0 ? points : 10);
    f.setBold(bold);
    f.setItalic(italic);
    f.setUnderline(underline);
    f.setStrikeOut(strike);
    return f;
}

QFont editFont() { return previewFont(QStringLiteral("Fixedsys"), 10, false, false, false, false); }

double pointsOf(const QFont& f)
{
    if (f.pointSizeF() > 0) return f.pointSizeF();
    if (f.pixelSize() > 0) return f.pixelSize() * 72.0 / 96.0;
    return 10;
}

// Point sizes a text block may carry; what the font dialog gives is kept
// within them so a block never outgrows the 16-bit twips of its record.
constexpr double kMinPoints = 4, kMaxPoints = 200;

// Windows-1252's characters in 0x80-0x9F; 0 marks the five unused codes.
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// The text in Windows-1252 when every character has a code there, else UTF-8.
QByteArray encodeText(const QString& s)
{
    QByteArray out;
    out.reserve(s.size());
    for (QChar c : s) {
        const char16_t u = c.unicode();
        if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) {
            out.append(char(u));
            continue;
        }
        int code = -1;
        for (int i = 0; i < 32; ++i)
            if (kCp1252High[i] != 0 && kCp1252High[i] == u) code = 0x80 + i;
        if (code < 0) return s.toUtf8();
        out.append(char(code));
    }
    return out;
}

// The hourglass while a listing is read; never over a message box.
struct WaitCursor {
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

// Where the scan panel was last, and the disc images chosen in this session:
// the next dialog starts there and offers them again.
QString& lastScanFolder()
{
    static QString folder;
    return folder;
}
QStringList& chosenImages()
{
    static QStringList images;
    return images;
}

// The scan panel's drives: the mounted file systems, every optical drive (a
// mounted disc as its folder), the disc images chosen before and the entry
// that chooses one.
QList<DriveEntry> scanDriveEntries()
{
    namespace src = jk::sources;
    QList<DriveEntry> out;
    const auto named = [](const QString& path, const QString& label) {
        return label.isEmpty() ? QString() : path + QStringLiteral("  [") + label + u']';
    };
    DriveEntry imageChoice;
    for (const src::ScanDrive& d : src::scanDrives()) {
        switch (d.kind) {
        case src::ScanDrive::Volume: out.append({d.path, named(d.path, d.label), true}); break;
        case src::ScanDrive::OpticalDrive:
            if (!d.mountPoint.isEmpty())
                out.append({d.mountPoint, named(d.mountPoint, d.label.isEmpty() ? d.path : d.label), true});
            else
                out.append({d.path, QString(), false});
            break;
        case src::ScanDrive::DiscImage:
            imageChoice = {TextBlockDialog::kDiscImageChoice, jk::texts().msg(jk::Msg::DiscImageEntry), false};
            break;
        }
    }
    for (const QString& image : chosenImages()) out.append({image, QFileInfo(image).fileName(), false});
    out.append(imageChoice);
    return out;
}

QString decodeFile(const QByteArray& data)
{
    // UTF-16 is only recognised by its byte-order mark.
    if (data.startsWith("\xFF\xFE")) return QStringDecoder(QStringDecoder::Utf16LE).decode(data.mid(2));
    if (data.startsWith("\xFE\xFF")) return QStringDecoder(QStringDecoder::Utf16BE).decode(data.mid(2));
    return jk::decodeText(data);
}

}  // namespace

const QString TextBlockDialog::kDiscImageChoice = QStringLiteral(":disc-image");

TextBlockDialog::TextBlockDialog(QWidget* parent) : TextBlockDialog(TextEditRequest{}, parent) {}

TextBlockDialog::TextBlockDialog(const TextEditRequest& request, QWidget* parent) : QDialog(parent)
{
    setObjectName("TXTFORM");
    setWindowTitle(jk::texts().msgOr(jk::Msg::EnterText, "Enter your text"));

    menuBar_ = new QMenuBar(this);
    txtFile_ = menuBar_->addMenu(jk::texts().msgOr(jk::Msg::FileMenu, "&File"));
    txtFile_->setObjectName("TXTFILE");
    fopen_ = txtFile_->addAction(jk::texts().msgOr(jk::Msg::OpenMenu, "&Open"));
    fopen_->setObjectName("Fopen");
    fsave_ = txtFile_->addAction(jk::texts().msgOr(jk::Msg::SaveMenu, "&Save"));
    fsave_->setObjectName("Fsave");
    scancd_ = menuBar_->addAction(jk::texts().msgOr(jk::Msg::ScanDrive, "Scan &Drive"));
    scancd_->setObjectName("SCANCD");

    frame2_ = new QGroupBox(jk::texts().msgOr(jk::Msg::Text, "Text"), this);
    frame2_->setObjectName("Frame2");
    textinput_ = new QPlainTextEdit(frame2_);
    textinput_->setObjectName("Textinput");
    textinput_->setFont(editFont());
    textinput_->setMinimumSize(360, 200);
    auto* textLayout = new QVBoxLayout(frame2_);
    textLayout->addWidget(textinput_);

    panel_ = new QGroupBox(jk::texts().msgOr(jk::Msg::Options, "Options"), this);
    panel_->setObjectName("SSPanel2");
    fonts_ = new QPushButton(jk::texts().msgOr(jk::Msg::FontButton, "Fonts"), panel_);
    fonts_->setObjectName("Command4");
    // The font dialog of this platform has no colour choice, so the text
    // colour has a button of its own.
    foreColor_ = new QPushButton(tr("Text co&lor..."), panel_);
    foreColor_->setObjectName("ForeColor");

    frame4_ = new QGroupBox(jk::texts().msgOr(jk::Msg::Alignment, "Alignment"), panel_);
    frame4_->setObjectName("Frame4");
    lft_ = new QRadioButton(jk::texts().tipOr(17, "Left"), frame4_);
    lft_->setObjectName("Lft");
    cntr_ = new QRadioButton(jk::texts().msgOr(jk::Msg::Center, "Center"), frame4_);
    cntr_->setObjectName("Cntr");
    rgt_ = new QRadioButton(jk::texts().tipOr(18, "Right"), frame4_);
    rgt_->setObjectName("Rgt");
    auto* alignLayout = new QVBoxLayout(frame4_);
    alignLayout->addWidget(lft_);
    alignLayout->addWidget(cntr_);
    alignLayout->addWidget(rgt_);

    frame5_ = new QGroupBox(jk::texts().msgOr(jk::Msg::Background, "Background"), panel_);
    frame5_->setObjectName("Frame5");
    option1_ = new QRadioButton(jk::texts().msgOr(jk::Msg::Transparent, "Transparent"), frame5_);
    option1_->setObjectName("Option1");
    option2_ = new QRadioButton(jk::texts().msgOr(jk::Msg::SolidColor, "Colors"), frame5_);
    option2_->setObjectName("Option2");
    auto* backLayout = new QVBoxLayout(frame5_);
    backLayout->addWidget(option1_);
    backLayout->addWidget(option2_);

    check1_ = new QCheckBox(jk::texts().msgOr(jk::Msg::Border, "Border"), panel_);
    check1_->setObjectName("Check1");

    auto* panelLayout = new QVBoxLayout(panel_);
    panelLayout->addWidget(fonts_);
    panelLayout->addWidget(foreColor_);
    panelLayout->addWidget(frame4_);
    panelLayout->addWidget(frame5_);
    panelLayout->addWidget(check1_);
    panelLayout->addStretch(1);

    ok_ = new QPushButton(jk::texts().msgOr(jk::Msg::Ok, "OK"), this);
    ok_->setObjectName("Command1");
    ok_->setDefault(true);
    cancel_ = new QPushButton(jk::texts().msgOr(jk::Msg::Cancel, "Cancel"), this);
    cancel_->setObjectName("Command2");

    auto* top = new QHBoxLayout;
    top->addWidget(frame2_, 1);
    top->addWidget(panel_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);
    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(menuBar_);
    layout->addLayout(top, 1);
    layout->addLayout(buttons);

    connect(ok_, &QPushButton::clicked, this, &TextBlockDialog::acceptText);
    connect(cancel_, &QPushButton::clicked, this, &TextBlockDialog::cancel);
    connect(fonts_, &QPushButton::clicked, this, &TextBlockDialog::chooseFont);
    connect(foreColor_, &QPushButton::clicked, this, &TextBlockDialog::chooseTextColour);
    connect(lft_, &QRadioButton::clicked, this, &TextBlockDialog::alignLeft);
    connect(cntr_, &QRadioButton::clicked, this, &TextBlockDialog::alignCentre);
    connect(rgt_, &QRadioButton::clicked, this, &TextBlockDialog::alignRight);
    connect(option1_, &QRadioButton::clicked, this, &TextBlockDialog::setTransparent);
    connect(option2_, &QRadioButton::clicked, this, &TextBlockDialog::chooseBackground);
    connect(check1_, &QCheckBox::clicked, this, &TextBlockDialog::toggleBorder);
    connect(fopen_, &QAction::triggered, this, &TextBlockDialog::openTextFile);
    connect(fsave_, &QAction::triggered, this, &TextBlockDialog::saveTextFile);
    connect(txtFile_, &QMenu::aboutToShow, this, &TextBlockDialog::showTypingPanel);
    connect(scancd_, &QAction::triggered, this, &TextBlockDialog::openScanPanel);

    // Remember where an edit went in; textChanged then trims what the spine
    // strip cannot take (the document must not be edited while it reports).
    connect(textinput_->document(), &QTextDocument::contentsChange, this,
            [this](int position, int, int added) {
                changePos_ = position;
                changeAdded_ = added;
            });
    connect(textinput_, &QPlainTextEdit::textChanged, this, [this] { limitLength(changePos_, changeAdded_); });

    initialise(request);
}

TextEditResult TextBlockDialog::edit(QWidget* parent, const TextEditRequest& request)
{
    TextBlockDialog dialog(request, parent);
    dialog.exec();
    return dialog.result();
}

void TextBlockDialog::initialise(const TextEditRequest& request)
{
    spine_ = request.mode == TextEditRequest::Mode::Spine;
    fromListing_ = false;
    startText_ = request.text;
    result_ = TextEditResult{};
    result_.style = request.style;
    result_.spineFont = request.spineFont;

    if (!spine_) {
        const jk::TextStyle& s = result_.style;
        fore_ = s.foreColor;
        back_ = s.backColor;
        opaque_ = s.backStyle == 1;
        if (!s.fontName.isEmpty())
            textinput_->setFont(previewFont(s.fontName, s.fontSize, s.bold != 0, s.italic != 0,
                                            s.underline != 0, s.strikethru != 0));
        check1_->setChecked(s.borderStyle == 1);
        (opaque_ ? option2_ : option1_)->setChecked(true);
        alignment_ = jk::i16(s.alignment == 1 || s.alignment == 2 ? s.alignment : 0);
    } else {
        const jk::SpineFont& sf = result_.spineFont;
        // The spine has no border, no transparency and no text files.
        option1_->hide();
        check1_->hide();
        txtFile_->menuAction()->setVisible(false);
        scancd_->setVisible(false);
        menuBar_->hide();
        option2_->setChecked(true);
        fore_ = sf.foreColor;
        back_ = sf.backColor;
        opaque_ = true;
        textinput_->setFont(previewFont(sf.name.isEmpty() ? QStringLiteral("Arial") : sf.name, sf.size,
                                        sf.bold != 0, sf.italic != 0, sf.underline != 0, sf.strikethru != 0));
        alignment_ = 0;
    }
    panel_->show();
    switch (alignment_) {
    case 1: rgt_->setChecked(true); break;
    case 2: cntr_->setChecked(true); break;
    default: lft_->setChecked(true); break;
    }
    updatePreview();

    // Twips 9765 x 5355 at 15 twips a pixel, centred on the screen.
    resize(QSize(651, 357).expandedTo(minimumSizeHint()));
    if (QScreen* s = screen()) {
        const QRect area = s->geometry();
        move(area.x() + (area.width() - width()) / 2, area.y() + (area.height() - height()) / 2);
    }

    if (!request.text.isEmpty()) textinput_->setPlainText(request.text);
    textinput_->moveCursor(QTextCursor::End);
    textinput_->setFocus();
}

void TextBlockDialog::ensureStyled()
{
    jk::TextStyle& s = result_.style;
    if (!s.fontName.isEmpty()) return;
    jk::sheet::applyDefaultFont(s);
    s.backStyle = 0;
    s.borderStyle = 0;
    s.backColor = 0;
}

void TextBlockDialog::updatePreview()
{
    QColor base;
    if (spine_ || opaque_)
        base = jk::winColor(back_);
    else
        // White text on a transparent block would vanish on white.
        base = jk::winColor(fore_ == kWhite ? 0 : kWhite);
    QPalette p = textinput_->palette();
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::Text, jk::winColor(fore_));
    textinput_->setPalette(p);

    QTextOption option = textinput_->document()->defaultTextOption();
    const int a = alignment_;
    option.setAlignment(a == 1 ? Qt::AlignRight : a == 2 ? Qt::AlignHCenter : Qt::AlignLeft);
    textinput_->document()->setDefaultTextOption(option);
}

void TextBlockDialog::limitLength(int position, int added)
{
    if (!spine_ || limiting_) return;
    QTextDocument* doc = textinput_->document();
    const int length = doc->characterCount() - 1;
    if (length <= kSpineMaxChars) return;
    // Drop the end of what was just typed or pasted, as a length-limited box
    // refuses the keys past its limit.
    const int end = std::min(position + added, length);
    int start = std::max(position, end - (length - kSpineMaxChars));
    if (start >= end) {
        // The change was no insertion (the text was too long beforehand).
        return;
    }
    limiting_ = true;
    QTextCursor c(doc);
    c.setPosition(start);
    c.setPosition(end, QTextCursor::KeepAnchor);
    c.removeSelectedText();
    limiting_ = false;
}

void TextBlockDialog::alignLeft()
{
    alignment_ = 0;
    lft_->setChecked(true);
    updatePreview();
}

void TextBlockDialog::alignCentre()
{
    alignment_ = 2;
    cntr_->setChecked(true);
    updatePreview();
}

void TextBlockDialog::alignRight()
{
    alignment_ = 1;
    rgt_->setChecked(true);
    updatePreview();
}

void TextBlockDialog::acceptText()
{
    QString text = textinput_->toPlainText();
    text.replace(u'\t', QStringLiteral("        "));
    if (listsAudioDisc()) storeDisc(text);
    result_.text = text;
    result_.accepted = true;
    result_.fromListing = fromListing_;
    if (!spine_) {
        result_.style.alignment = alignment_;
        // A drive listing lines up in columns only in a fixed-width face.
        if (fromListing_) result_.style.fontName = QStringLiteral("Fixedsys");
    }
    closing_ = true;
    accept();
}

void TextBlockDialog::cancel() { reject(); }

void TextBlockDialog::reject()
{
    if (!closing_) {
        result_.accepted = false;
        // A cancelled spine edit hands the text it started with back, so the
        // spine keeps it whatever the caller does with the result.
        result_.text = spine_ ? startText_ : QString();
        closing_ = true;
    }
    QDialog::reject();
}

void TextBlockDialog::chooseFont()
{
    QFont initial;
    if (spine_) {
        const jk::SpineFont& sf = result_.spineFont;
        initial = previewFont(sf.name.isEmpty() ? QStringLiteral("Arial") : sf.name, sf.size, sf.bold != 0,
                              sf.italic != 0, sf.underline != 0, sf.strikethru != 0);
    } else if (lastFont_) {
        initial = *lastFont_;
    } else if (const jk::TextStyle& s = result_.style; !s.fontName.isEmpty()) {
        initial = previewFont(s.fontName, s.fontSize, s.bold != 0, s.italic != 0, s.underline != 0,
                              s.strikethru != 0);
    } else {
        initial = previewFont(QStringLiteral("Arial"), 11.75, false, false, false, false);
    }

    const std::optional<QFont> chosen = pf::services().fonts->chooseFont(initial, jk::plainCaption(jk::texts().msgOr(jk::Msg::FontButton, "Fonts")));
    if (!chosen) return;
    QFont f = *chosen;
    const double points = std::clamp(pointsOf(f), kMinPoints, kMaxPoints);
    f.setPointSizeF(points);
    lastFont_ = f;
    if (spine_) {
        jk::SpineFont& sf = result_.spineFont;
        sf.name = f.family();
        sf.underline = f.underline();
        sf.italic = f.italic();
        sf.bold = f.bold();
        sf.strikethru = f.strikeOut();
        sf.size = jk::i32(std::lround(points));
    } else {
        ensureStyled();
        jk::TextStyle& s = result_.style;
        s.fontName = f.family();
        s.fontSize = jk::i16(std::lround(points));
        s.bold = f.bold();
        s.italic = f.italic();
        s.strikethru = f.strikeOut();
        s.underline = f.underline();
        fore_ = s.foreColor;
    }
    textinput_->setFont(f);
    updatePreview();
}

void TextBlockDialog::chooseTextColour()
{
    const std::optional<QColor> c =
        pf::services().colors->chooseColor(jk::winColor(fore_), jk::plainCaption(foreColor_->text()));
    if (!c || !c->isValid()) return;
    fore_ = jk::toWinColor(*c);
    if (spine_) {
        result_.spineFont.foreColor = fore_;
    } else {
        ensureStyled();
        result_.style.foreColor = fore_;
    }
    updatePreview();
}

void TextBlockDialog::setTransparent()
{
    if (spine_) return;
    ensureStyled();
    result_.style.backStyle = 0;
    fore_ = result_.style.foreColor;
    opaque_ = false;
    updatePreview();
}

void TextBlockDialog::chooseBackground()
{
    if (!spine_) {
        ensureStyled();
        jk::TextStyle& s = result_.style;
        s.backStyle = 1;
        fore_ = s.foreColor;
        back_ = s.backColor;
        opaque_ = true;
    }
    updatePreview();

    // Only a click opens the colour choice, never the button's initial
    // selection.
    const std::optional<QColor> c =
        pf::services().colors->chooseColor(jk::winColor(back_), jk::plainCaption(jk::texts().msgOr(jk::Msg::SolidColor, "Colors")));
    if (!c || !c->isValid()) return;
    back_ = jk::toWinColor(*c);
    if (spine_)
        result_.spineFont.backColor = back_;
    else
        result_.style.backColor = back_;
    updatePreview();
}

void TextBlockDialog::toggleBorder()
{
    if (spine_) return;
    ensureStyled();
    result_.style.borderStyle = check1_->isChecked() ? 1 : 0;
    fore_ = result_.style.foreColor;
    updatePreview();
}

namespace {
QString& lastFolder()
{
    static QString folder;
    return folder;
}
const char* const kTextFilter = "Text files (*.txt);;All files (*)";
}  // namespace

void TextBlockDialog::openTextFile()
{
    const QString folder = lastFolder().isEmpty() ? jk::app().settings.projectFolder : lastFolder();
    const QString path =
        pf::services().files->openFile(jk::plainCaption(jk::texts().msgOr(jk::Msg::OpenMenu, "Open")), folder, QString::fromLatin1(kTextFilter));
    if (path.isEmpty()) return;
    lastFolder() = QFileInfo(path).absolutePath();
    QString text, error;
    if (!readTextFile(path, &text, &error)) {
        showError(error);
        return;
    }
    textinput_->setPlainText(text);
}

void TextBlockDialog::saveTextFile()
{
    const QString folder = lastFolder().isEmpty() ? jk::app().settings.projectFolder : lastFolder();
    const QString path = pf::services().files->saveFile(jk::plainCaption(jk::texts().msgOr(jk::Msg::SaveMenu, "Save")), folder,
                                                        QString::fromLatin1(kTextFilter), QStringLiteral("txt"));
    if (path.isEmpty()) return;
    lastFolder() = QFileInfo(path).absolutePath();
    QString error;
    if (!writeTextFile(path, textinput_->toPlainText(), &error)) showError(error);
}

void TextBlockDialog::showError(const QString& text)
{
    pf::services().messages->show(text, jk::texts().msgOr(jk::Msg::ProgramTitle, "Jewelcase Studio"), pf::Icon::Warning);
}

bool TextBlockDialog::readTextFile(const QString& path, QString* text, QString* error)
{
    const QFileInfo info(path);
    const QString name = info.fileName();
    if (!info.exists()) {
        *error = tr("The file \"%1\" could not be found.").arg(name);
        return false;
    }
    // Folders, devices and pipes are no text files (and /dev/zero never ends).
    if (!info.isFile()) {
        *error = tr("\"%1\" is not a text file.").arg(name);
        return false;
    }
    const auto tooLarge = [&](qint64 size) {
        *error = tr("The file \"%1\" is too large for a text block (%2 KB; at most %3 KB).")
                     .arg(name)
                     .arg((size + 1023) / 1024)
                     .arg(kMaxFileBytes / 1024);
        return false;
    };
    if (info.size() > kMaxFileBytes) return tooLarge(info.size());
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        *error = tr("The file \"%1\" could not be read: %2").arg(name, f.errorString());
        return false;
    }
    const QByteArray data = f.read(kMaxFileBytes + 1);
    if (f.error() != QFileDevice::NoError) {
        *error = tr("The file \"%1\" could not be read: %2").arg(name, f.errorString());
        return false;
    }
    if (data.size() > kMaxFileBytes) return tooLarge(data.size());

    QString s = decodeFile(data);
    if (s.contains(QChar(0))) {
        *error = tr("\"%1\" is not a text file.").arg(name);
        return false;
    }
    s.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    s.replace(u'\r', u'\n');
    if (s.startsWith(u'"')) {
        // Written by Save: one quoted record and a line break.
        s.remove(0, 1);
        if (s.endsWith(u'\n')) s.chop(1);
        if (s.endsWith(u'"')) s.chop(1);
    } else if (s.endsWith(u'\n')) {
        // The last line's break ends the line; it is no empty line of its own.
        s.chop(1);
    }
    *text = s;
    return true;
}

bool TextBlockDialog::writeTextFile(const QString& path, const QString& text, QString* error)
{
    QString body = text;
    body.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    body.replace(u'\n', QLatin1String("\r\n"));
    const QByteArray data = encodeText(u'"' + body + QLatin1String("\"\r\n"));
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(data) != data.size() || !f.commit()) {
        *error = tr("The file \"%1\" could not be saved: %2").arg(QFileInfo(path).fileName(), f.errorString());
        return false;
    }
    return true;
}

// ------------------------------------------------------------ the scan panel

void TextBlockDialog::buildScanPanel()
{
    frame1_ = new QGroupBox(jk::plainCaption(jk::texts().msgOr(jk::Msg::ScanDrive, "Scan drive")), panel_);
    frame1_->setObjectName("Frame1");
    trio_ = new DriveFolderFileTrio(frame1_);
    trio_->setMinimumSize(400, 200);
    option3_ = new QRadioButton(jk::texts().msgOr(jk::Msg::Folders, "Directories"), frame1_);
    option3_->setObjectName("Option3");
    option4_ = new QRadioButton(jk::texts().msgOr(jk::Msg::Files, "Files"), frame1_);
    option4_->setObjectName("Option4");
    option4_->setChecked(true);
    datetime_ = new QCheckBox(jk::texts().msgOr(jk::Msg::DatesAndTimes, "Date/Time"), frame1_);
    datetime_->setObjectName("DATETIME");
    filesize_ = new QCheckBox(jk::texts().msgOr(jk::Msg::FileSizes, "File size"), frame1_);
    filesize_->setObjectName("FILESIZE");

    auto* options = new QHBoxLayout;
    options->addWidget(option3_);
    options->addWidget(option4_);
    options->addSpacing(12);
    options->addWidget(datetime_);
    options->addWidget(filesize_);
    options->addStretch(1);
    auto* layout = new QVBoxLayout(frame1_);
    layout->addWidget(trio_, 1);
    layout->addLayout(options);
    static_cast<QVBoxLayout*>(panel_->layout())->insertWidget(3, frame1_, 1);

    if (!lastScanFolder().isEmpty()) trio_->setPath(lastScanFolder());
    trio_->driveList()->setProvider(scanDriveEntries);
    shownDrive_ = trio_->driveList()->drive();

    connect(trio_, &DriveFolderFileTrio::driveChanged, this, [this](const QString& drive) { shownDrive_ = drive; });
    connect(trio_, &DriveFolderFileTrio::pathChanged, this, [this](const QString& folder) {
        disc_.reset();
        lastScanFolder() = folder;
        scanDisk();
    });
    connect(trio_, &DriveFolderFileTrio::sourceChosen, this, &TextBlockDialog::chooseSource);
    for (QAbstractButton* b : {static_cast<QAbstractButton*>(option3_), static_cast<QAbstractButton*>(option4_),
                               static_cast<QAbstractButton*>(datetime_), static_cast<QAbstractButton*>(filesize_)})
        connect(b, &QAbstractButton::clicked, this, &TextBlockDialog::scanDisk);
}

void TextBlockDialog::openScanPanel()
{
    if (spine_) return;
    if (!frame1_) buildScanPanel();
    frame4_->hide();
    frame5_->hide();
    frame1_->show();
    datetime_->setChecked(false);
    filesize_->setChecked(false);
    fromListing_ = true;
    textinput_->setFont(editFont());
    // A listing lines up in columns: no line is folded.
    textinput_->setLineWrapMode(QPlainTextEdit::NoWrap);
    // The panel makes the dialog larger: keep it centred and on the screen.
    resize(size().expandedTo(sizeHint()));
    if (QScreen* s = screen()) {
        const QRect area = s->availableGeometry();
        move(area.x() + std::max(0, (area.width() - width()) / 2), area.y() + std::max(0, (area.height() - height()) / 2));
    }
    scanDisk();
}

void TextBlockDialog::showTypingPanel()
{
    if (frame1_) frame1_->hide();
    textinput_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    frame4_->show();
    frame5_->show();
}

void TextBlockDialog::chooseSource(const QString& key)
{
    DriveList* drives = trio_->driveList();
    if (key == kDiscImageChoice) {
        const QString path = pf::services().files->openFile(jk::plainCaption(jk::texts().msg(jk::Msg::DiscImageEntry)),
                                                            lastScanFolder(), jk::sources::discImageFilter());
        if (path.isEmpty()) {
            drives->setDrive(shownDrive_);  // the list shows what is listed
            return;
        }
        const QString image = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        if (!chosenImages().contains(image)) chosenImages().append(image);
        drives->addEntry({image, QFileInfo(image).fileName(), false});
        drives->setDrive(image);  // lists it, as choosing it from the list does
        return;
    }
    shownDrive_ = key;
    const bool found = loadDisc(key);
    trio_->showSource(key, drives->currentText(), found ? disc_->fileNames : QStringList());
    if (found) scanDisk();
}

bool TextBlockDialog::loadDisc(const QString& source)
{
    namespace src = jk::sources;
    disc_.reset();
    const QString dbPath = jk::app().files.discDatabasePath.isEmpty() ? jk::paths::discDatabaseFile()
                                                                       : jk::app().files.discDatabasePath;
    for (;;) {
        src::Listing why;
        {
            WaitCursor wait;
            // An unusable database only costs the stored titles here.
            src::CdPlayerDatabase db(dbPath);
            db.load();
            disc_ = src::readAudioDisc(source, &db, &why);
        }
        if (disc_) return true;
        if (why.outcome != src::Listing::NoDisc) {
            showError(why.message);
            return false;
        }
        if (!askRetry(why.message)) return false;
    }
}

bool TextBlockDialog::askRetry(const QString& reason)
{
    const QString text = jk::texts().msg(jk::Msg::AudioCdRetry);
    const int answer = pf::services().messages->show(reason.isEmpty() ? text : reason + QStringLiteral("\n\n") + text,
                                                     jk::texts().msgOr(jk::Msg::AudioCd, "Audio CD"),
                                                     pf::Icon::Information, pf::Buttons::RetryCancel, pf::AnswerRetry);
    return answer == pf::AnswerRetry;
}

void TextBlockDialog::scanDisk()
{
    namespace src = jk::sources;
    if (!frame1_ || scanning_) return;
    scanning_ = true;
    const auto done = qScopeGuard([this] { scanning_ = false; });

    src::ListingOptions options;
    options.dates = datetime_->isChecked();
    src::Listing listing;
    const QString source = trio_->source();
    if (!source.isEmpty()) {
        // A disc lists its tracks as files; the kind cannot be chosen.
        option4_->setChecked(true);
        option3_->setEnabled(false);
        option4_->setEnabled(false);
        filesize_->setEnabled(true);
        options.sizes = filesize_->isChecked();
        for (;;) {
            if (!disc_ && !loadDisc(source)) {
                trio_->showSource(source, trio_->driveList()->currentText(), {});
                return;
            }
            {
                WaitCursor wait;
                listing = src::listAudioDisc(*disc_, options);
            }
            if (listing.outcome != src::Listing::NoDisc) break;
            disc_.reset();
            if (!askRetry(listing.message)) return;
        }
        trio_->showSource(source, trio_->driveList()->currentText(), disc_->fileNames);
    } else {
        option3_->setEnabled(true);
        option4_->setEnabled(true);
        options.folders = option3_->isChecked();
        filesize_->setEnabled(!options.folders);  // folders have no size
        options.sizes = !options.folders && filesize_->isChecked();
        WaitCursor wait;
        listing = src::listFolder(trio_->path(), options, trio_->driveList()->drive());
    }

    switch (listing.outcome) {
    case src::Listing::Text: {
        WaitCursor wait;
        listedText_ = listing.text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        textinput_->setPlainText(listedText_);
        break;
    }
    case src::Listing::Unchanged: break;  // a one-track disc: nothing to list
    case src::Listing::NoDisc:
    case src::Listing::Failed: showError(listing.message); break;
    }
}

bool TextBlockDialog::listsAudioDisc() const
{
    // The audio test as it always was: the second file ends in "cda".
    return fromListing_ && trio_ && disc_ && !trio_->source().isEmpty() &&
           trio_->fileList()->fileNames().value(1).endsWith(QLatin1String("cda"), Qt::CaseInsensitive);
}

void TextBlockDialog::storeDisc(const QString& text)
{
    namespace src = jk::sources;
    const QString caption = jk::texts().msgOr(jk::Msg::AudioCd, "Audio CD");
    const int answer = pf::services().messages->show(
        jk::texts().msgOr(jk::Msg::StoreTrackTitles, "Store the track titles of this CD in the disc database?"), caption,
        pf::Icon::Question, pf::Buttons::YesNo, pf::AnswerNo);
    if (answer != pf::AnswerYes) return;
    const int trackCount = int(disc_->toc.tracks.size());
    if (trackCount < 2) return;

    const QString notStored = jk::texts().msg(jk::Msg::TitlesNotStored);
    src::CdPlayerDatabase db(jk::app().files.discDatabasePath.isEmpty() ? jk::paths::discDatabaseFile()
                                                                         : jk::app().files.discDatabasePath);
    QString why;
    // Asked before the questions, so nobody types titles that cannot be kept.
    if (!db.load(&why)) {
        showError(why + u'\n' + notStored);
        return;
    }
    const std::optional<QString> artist = pf::services().input->getText(
        jk::texts().msgOr(jk::Msg::EnterArtist, "Enter the name of the artist:"), caption, disc_->artist);
    if (!artist) return;
    const std::optional<QString> title = pf::services().input->getText(
        jk::texts().msgOr(jk::Msg::EnterCdTitle, "Enter the title of the CD:"), caption, disc_->title);
    if (!title) return;
    // Each line ended by a line break is one track's title. A line left as
    // the listing made it stores the track's known title, not its size and
    // time columns, so the next listing shows the title in its column again.
    QStringList titles = src::CdPlayerDatabase::titlesFromText(QString(text).replace(u'\n', u'\r'));
    const QStringList listed = listedText_.split(u'\n');
    for (qsizetype k = 0; k < titles.size() && k < listed.size() && k < disc_->titles.size(); ++k)
        if (titles[k] == listed[k] && !disc_->titles[k].isEmpty()) titles[k] = disc_->titles[k];
    if (!db.store(disc_->id, {*artist, *title, titles}, trackCount, &why)) showError(why + u'\n' + notStored);
}
