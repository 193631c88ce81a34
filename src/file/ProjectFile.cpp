#include "file/ProjectFile.h"
#include "file/ProjectFileCodec.h"
#include "file/ValueFile.h"
#include "model/AppContext.h"
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QStringDecoder>
#include <cerrno>
#include <cstring>
#include <limits>
#include <type_traits>

namespace jk {

using namespace prjcodec;

namespace {

// The order backgrounds are written in.
constexpr std::array<i16, 5> kFormatCodes{FmtSimple, FmtDouble, FmtInside, FmtCdRom, FmtJacket};

// The title of the reader's messages; the program name when the message
// table is not loaded (headless tools, tests).
QString errorTitle()
{
    const QString t = texts().msg(Msg::ProgramTitle);
    return t.isEmpty() ? QStringLiteral("Jewelcase Studio") : t;
}

// Zero-padded to the field's digit count; other digit counts show nothing.
QString formatNumber(int number, int digits)
{
    if (digits < 1 || digits > 4) return {};
    const QString n = QString::number(std::abs(number)).rightJustified(digits, u'0');
    return number < 0 ? u'-' + n : n;
}

// ---------------------------------------------------------------- writing

class Writer {
public:
    QString out;

    template <typename T>
    void number(T v)
    {
        static_assert(std::is_integral_v<T>);
        const qint64 n = qint64(v);
        // A sign position, blank for non-negative numbers, and a blank after.
        if (n >= 0) out += u' ';
        out += QString::number(n);
        out += QStringLiteral(" \r\n");
    }
    // Flags are written as the file has always held them: -1 for true (a few
    // spine-font flags and the spine link use 1), 0 for false.
    void flag(bool b, int trueValue = -1) { number(b ? trueValue : 0); }
    // One line; a line break inside would shift every following value.
    void text(const QString& s)
    {
        QString line = s;
        line.replace(u'\r', u' ').replace(u'\n', u' ');
        out += line;
        out += QStringLiteral("\r\n");
    }
    // A block's text between markers; a final line break ends the last
    // line instead of adding an empty one.
    void blockText(const QString& s)
    {
        text(QString::fromLatin1(kTextBlockMarker));
        QString t = s;
        t.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
        if (t.endsWith(u'\n')) t.chop(1);
        for (const QString& line : t.split(u'\n')) text(line);
        text(QString::fromLatin1(kTextBlockMarker));
    }
    void style(const TextStyle& s)
    {
        text(s.fontName);
        number(s.fontSize);
        flag(s.bold);
        flag(s.italic);
        flag(s.strikethru);
        flag(s.underline);
        number(s.foreColor);
        number(s.backStyle);
        number(s.borderStyle);
        number(s.backColor);
        number(s.alignment);
        number(s.top);
        number(s.left);
        number(s.width);
        number(s.height);
    }
};

// Windows-1252 when every character fits, else UTF-8. Windows-1252 bytes that
// happen to form valid UTF-8 would be read back as UTF-8: those go as UTF-8.
QByteArray encodeFile(const QString& s)
{
    if (auto cp = toCp1252(s)) {
        bool ascii = std::all_of(cp->cbegin(), cp->cend(), [](char c) { return (c & 0x80) == 0; });
        if (ascii) return *cp;
        Utf8Validator v;
        v.feed(cp->constData(), cp->size());
        if (!v.valid()) return *cp;
    }
    return s.toUtf8();
}

// ---------------------------------------------------------------- reading

// Looks files of a project up beside it by base name, listing the folder
// only once and only when some name is missing.
class BesideLookup {
public:
    explicit BesideLookup(QString dir) : dir_(std::move(dir)) {}

    QString resolve(const QString& path)
    {
        // No file name holds a NUL; Qt would only warn about it.
        if (path.isEmpty() || path.startsWith(u'~') || path.contains(QChar(0))) return path;
        if (QFileInfo::exists(path) && (QDir::isAbsolutePath(path) || dir_.isEmpty())) return path;
        if (dir_.isEmpty()) return path;
        const QDir dir(dir_);
        if (QDir::isRelativePath(path) && !path.contains(u'\\') && QFileInfo::exists(dir.filePath(path)))
            return QDir::cleanPath(dir.filePath(path));
        const qsizetype cut = std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
        const QString base = path.mid(cut + 1);
        if (base.isEmpty() || base == u"." || base == u"..") return path;
        if (QFileInfo(dir.filePath(base)).isFile()) return dir.filePath(base);
        if (!listed_) {
            listed_ = true;
            QDirIterator it(dir_, QDir::Files | QDir::Hidden | QDir::System);
            // A folder with an absurd number of entries is not searched to the end.
            for (int n = 0; it.hasNext() && n < 100000; ++n) {
                it.next();
                names_.insert(it.fileName().toCaseFolded(), it.filePath());
            }
        }
        return names_.value(base.toCaseFolded(), path);
    }

private:
    QString dir_;
    bool listed_ = false;
    QHash<QString, QString> names_;
};

struct EndOfData {};  // thrown when the file ends: nothing more can be read

class Reader {
public:
    Reader(QIODevice& dev, ProjectData& data, QString name, const QString& projectDir,
           const ProjectErrorReporter& reporter)
        : g(data), lines_(dev, kMaxLineBytes, kMaxProjectFileBytes), name_(std::move(name)), reporter_(reporter),
          beside_(projectDir)
    {
    }

    // Chooses UTF-8 when the whole file is valid UTF-8, else Windows-1252,
    // and goes back to the start. False when the device cannot seek.
    bool detectEncoding(QIODevice& dev);
    void setUtf8(bool on) { utf8_ = on; }
    ProjectReadResult run();

private:
    ProjectData& g;  // what is read goes here

    // Errors: the first few are reported, the rest counted.
    void error(const QString& what)
    {
        ++result_.errors;
        if (result_.errors > kMaxReportedErrors) return;
        if (reporter_) reporter_(place() + what, errorTitle());
    }
    QString place() const
    {
        return name_.isEmpty() ? QStringLiteral("Line %1: ").arg(lines_.lineNumber())
                               : QStringLiteral("%1, line %2: ").arg(name_).arg(lines_.lineNumber());
    }
    static QString quoted(const QString& s)
    {
        QString shown = s.left(40);
        for (QChar& c : shown)
            if (!c.isPrint()) c = u'?';
        return u'"' + shown + (s.size() > 40 ? QStringLiteral("…\"") : QStringLiteral("\""));
    }

    QString line()
    {
        QByteArray bytes;
        if (!lines_.next(bytes)) {
            ++result_.errors;
            if (result_.errors <= kMaxReportedErrors && reporter_)
                reporter_(QStringLiteral("%1: the file ends too early, after line %2 (input past end of file).")
                              .arg(name_.isEmpty() ? QStringLiteral("Project file") : name_)
                              .arg(lines_.lineNumber()),
                          errorTitle());
            throw EndOfData{};
        }
        if (lines_.lastLineCut())
            error(QStringLiteral("the line is longer than %1 bytes; the rest of it was skipped.").arg(kMaxLineBytes));
        if (utf8_ && lines_.lineNumber() == 1 && bytes.startsWith("\xEF\xBB\xBF")) bytes.remove(0, 3);
        return decode(bytes);
    }
    // QString::fromUtf8 would drop a byte-order mark at the start of every
    // line, and with it a character of the value.
    QString decode(const QByteArray& bytes)
    {
        return utf8_ ? utf8Decoder_.decode(bytes) : fromCp1252(bytes);
    }

    // Reads one number into v. A value out of v's range is skipped and v
    // keeps what it held; a line that is no number is an error.
    template <typename T>
    void number(T& v)
    {
        const QString s = line();
        qint64 n = 0;
        switch (parse(s, n)) {
        case Parse::Ok:
            if (n >= qint64(std::numeric_limits<T>::min()) && n <= qint64(std::numeric_limits<T>::max()))
                v = T(n);
            break;
        case Parse::Overflow: break;
        case Parse::Bad: error(QStringLiteral("%1 is not a number.").arg(quoted(s))); break;
        }
    }
    // Reads a flag stored as a number of type Raw: any value but 0 is true
    // (the spine link alone counts only 1). A value out of Raw's range keeps
    // the flag as it was.
    template <typename Raw>
    void flag(bool& v, bool onlyOne = false)
    {
        Raw raw = v ? Raw(onlyOne ? 1 : -1) : Raw(0);
        number(raw);
        v = onlyOne ? raw == 1 : raw != 0;
    }
    i16 count()
    {
        i16 n = 0;
        number(n);
        if (n < 0) {
            error(QStringLiteral("the record count %1 is not valid.").arg(n));
            n = 0;
        }
        return n;
    }
    void text(QString& v)
    {
        v = line();
        if (v.size() > kMaxTextChars) {
            qsizetype keep = kMaxTextChars;
            if (v.at(keep - 1).isHighSurrogate()) --keep;
            v.truncate(keep);
            error(QStringLiteral("the text is longer than %1 characters; the rest of it was dropped.").arg(kMaxTextChars));
        }
    }

    enum class Parse { Ok, Overflow, Bad };
    static Parse parse(const QString& raw, qint64& n)
    {
        QStringView s(raw);
        while (!s.isEmpty() && (s.front() == u' ' || s.front() == u'\t')) s = s.mid(1);
        while (!s.isEmpty() && (s.back() == u' ' || s.back() == u'\t')) s.chop(1);
        bool negative = false;
        if (!s.isEmpty() && (s.front() == u'-' || s.front() == u'+')) {
            negative = s.front() == u'-';
            s = s.mid(1);
        }
        if (s.isEmpty()) return Parse::Bad;
        qint64 v = 0;
        bool overflow = false;
        for (QChar c : s) {
            if (c < u'0' || c > u'9') return Parse::Bad;
            if (v > (std::numeric_limits<qint64>::max() - 9) / 10) overflow = true;
            else v = v * 10 + (c.unicode() - u'0');
        }
        if (overflow) return Parse::Overflow;
        n = negative ? -v : v;
        return Parse::Ok;
    }

    // Records beyond a table's capacity are read (to stay in step with the
    // file) into a scratch record and dropped, with one message per table.
    template <typename R>
    R& slot(RecordTable<R>& table, int i, int declared, const char* what, R& scratch)
    {
        if (table.valid(i)) return table.at(i);
        if (i == table.capacity() + 1)
            error(QStringLiteral("the file holds %1 %2, more than the %3 a project can hold; the others were skipped.")
                      .arg(declared).arg(QLatin1String(what)).arg(table.capacity()));
        scratch = R{};
        return scratch;
    }

    void style(TextStyle& s)
    {
        text(s.fontName);
        number(s.fontSize);
        flag<i16>(s.bold);
        flag<i16>(s.italic);
        flag<i16>(s.strikethru);
        flag<i32>(s.underline);
        number(s.foreColor);
        number(s.backStyle);
        number(s.borderStyle);
        number(s.backColor);
        number(s.alignment);
        number(s.top);
        number(s.left);
        number(s.width);
        number(s.height);
    }

    void textBlocks(RecordTable<TextRecord>& table, const char* what);
    void body();

    LineReader lines_;
    QString name_;
    const ProjectErrorReporter& reporter_;
    BesideLookup beside_;
    bool utf8_ = false;
    QStringDecoder utf8Decoder_{QStringDecoder::Utf8,
                                QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom};
    bool version3_ = false;
    ProjectReadResult result_;
};

void Reader::textBlocks(RecordTable<TextRecord>& table, const char* what)
{
    const int n = count();
    table.setCount(n);
    TextRecord scratch;
    const QString marker = QString::fromLatin1(kTextBlockMarker);
    for (int i = 1; i <= n; ++i) {
        TextRecord& r = slot(table, i, n, what, scratch);
        number(r.sheet);
        line();  // the opening marker
        r.text.clear();
        bool dropped = false;
        // The search for the closing marker ends at the end of the file;
        // the text read up to there is kept.
        for (;;) {
            QByteArray bytes;
            if (!lines_.next(bytes)) break;
            if (lines_.lastLineCut())
                error(QStringLiteral("the line is longer than %1 bytes; the rest of it was skipped.").arg(kMaxLineBytes));
            QString l = decode(bytes);
            if (l == marker) break;
            if (r.text.size() + l.size() + 2 > kMaxTextChars) {
                if (!dropped) error(QStringLiteral("the text block is longer than %1 characters; the rest of it was dropped.")
                                        .arg(kMaxTextChars));
                dropped = true;
                continue;
            }
            r.text += l;
            r.text += QStringLiteral("\r\n");
        }
        style(r.style);
    }
}

void Reader::body()
{

    // The version line, missing in older files: then the first value is
    // already the composition.
    i16 first = 0;
    {
        QByteArray bytes;
        qint64 n = 0;
        if (lines_.next(bytes)) {
            QString s = decode(bytes);
            if (s.startsWith(QChar(0xFEFF))) s.remove(0, 1);
            if (parse(s, n) == Parse::Ok && n == kProjectFileVersion) first = i16(n);
        }
    }
    version3_ = first == kProjectFileVersion;
    result_.olderFile = !version3_;
    if (!version3_) lines_.rewind();

    i16 composition = 0;
    number(composition);
    result_.composition = composition;
    switch (composition) {
    case 1: case 2: case 4: case 5: case 6: case 8: case 9: case 10: case 12: case 13: case 14: case 16: case 24:
        result_.chosenSheets = composition;
        break;
    default: break;  // both cover kinds or nothing: the choices stay as they were
    }
    if (composition == FmtJacket) result_.exportEnabled = false;

    text(g.spineFont.name);
    text(g.spineTitle);
    g.spineText = g.spineTitle;
    if (version3_) {
        number(g.spineFont.backColor);
        number(g.spineFont.foreColor);
        flag<quint8>(g.spineFont.underline);
        flag<quint8>(g.spineFont.italic);
        flag<i32>(g.spineFont.bold);
        flag<quint8>(g.spineFont.strikethru);
        number(g.spineFont.size);
    }

    const int pictures = count();
    const int backgrounds = count();
    for (int i = 1; i <= backgrounds; ++i) {
        i16 code = 0;
        number(code);
        QString bg;
        text(bg);
        if (code < 1 || code > 16) {
            error(QStringLiteral("the background code %1 is not a sheet format (1 to 16).").arg(code));
            continue;
        }
        g.backgrounds[std::size_t(code)] = BackgroundRecord{beside_.resolve(bg)};
    }

    g.pictures.setCount(pictures);
    PictureRecord scratchPicture;
    for (int i = 1; i <= pictures; ++i) {
        PictureRecord& r = slot(g.pictures, i, pictures, "pictures", scratchPicture);
        number(r.sheet);
        text(r.file);
        r.file = beside_.resolve(r.file);
        number(r.top);
        number(r.left);
        number(r.width);
        number(r.height);
        if (version3_) number(r.displayMode);
    }

    textBlocks(g.freeText, "free text blocks");
    textBlocks(g.pageText, "text-page blocks");

    const int chars = count();
    g.charFields.setCount(chars);
    CharFieldRecord scratchChar;
    for (int i = 1; i <= chars; ++i) {
        CharFieldRecord& r = slot(g.charFields, i, chars, "character fields", scratchChar);
        number(r.sheet);
        text(r.valueFile);
        r.valueFile = beside_.resolve(r.valueFile);
        // The caption is not stored: it is the first value of the data file.
        r.text = (&r == &scratchChar) ? QString() : firstFieldValue(r.valueFile);
        style(r.style);
    }

    const int nums = count();
    g.numFields.setCount(nums);
    NumFieldRecord scratchNum;
    for (int i = 1; i <= nums; ++i) {
        NumFieldRecord& r = slot(g.numFields, i, nums, "numeric fields", scratchNum);
        number(r.sheet);
        number(r.digits);
        number(r.number);
        number(r.spineLink);
        style(r.style);
        if (r.spineLink == 1 && &r != &scratchNum) {
            // The field's number is the spine number: it stood at the end of
            // the spine line, so the spine text loses as many characters.
            g.spineNumberText = formatNumber(r.number, r.digits);
            propagateSpine(g);
            g.spineText = g.spineTitle.chopped(std::clamp<qsizetype>(r.digits, 0, g.spineTitle.size()));
            // The spine line joins text and number with one blank; take that
            // blank off too, or every save and reopen would add one.
            if (g.spineTitle.endsWith(u' ' + g.spineNumberText) && g.spineText.endsWith(u' ') &&
                g.spineText.size() > 1)
                g.spineText.chop(1);
            if (g.spineText.size() > kMaxTextChars) g.spineText.truncate(kMaxTextChars);
        }
    }

    if (version3_) flag<i16>(g.spinesHidden);
    else g.spinesHidden = false;
}

bool Reader::detectEncoding(QIODevice& dev)
{
    Utf8Validator v;
    qint64 total = 0;
    char chunk[16 * 1024];
    while (total < kMaxProjectFileBytes && !v.failed()) {
        const qint64 n = dev.read(chunk, std::min<qint64>(sizeof chunk, kMaxProjectFileBytes - total));
        if (n <= 0) break;
        total += n;
        v.feed(chunk, n);
    }
    // A file cut inside a character by the size limit still counts as UTF-8.
    utf8_ = !v.failed();
    return dev.seek(0);
}

ProjectReadResult Reader::run()
{
    g.createTables(TableSizing::OpenProject);
    g.spineNumberText.clear();
    g.spineText.clear();
    g.sheetComposition = 0;
    g.currentNumber = 1;
    g.modified = false;
    result_.opened = true;
    result_.exportEnabled = true;
    try {
        body();
    } catch (const EndOfData&) {
        // Reported where it happened; what was read so far stays.
    }
    if (result_.errors > kMaxReportedErrors && reporter_)
        reporter_(QStringLiteral("%1: %2 further errors in this file were not shown.")
                      .arg(name_.isEmpty() ? QStringLiteral("Project file") : name_)
                      .arg(result_.errors - kMaxReportedErrors),
                  errorTitle());
    return result_;
}

}  // namespace

// ---------------------------------------------------------------- public

QByteArray projectFileBytes(const ProjectData& g)
{
    Writer w;
    w.number(i16(kProjectFileVersion));
    w.number(g.sheetComposition);
    w.text(g.spineFont.name);
    w.text(g.spineText);  // the spine title is the spine text once saved
    w.number(g.spineFont.backColor);
    w.number(g.spineFont.foreColor);
    w.flag(g.spineFont.underline, 1);
    w.flag(g.spineFont.italic, 1);
    w.flag(g.spineFont.bold);
    w.flag(g.spineFont.strikethru, 1);
    w.number(g.spineFont.size);

    int pictures = 0;
    for (int i = 1; i <= g.pictures.count(); ++i)
        if (!g.pictures.at(i).isFree()) ++pictures;
    int backgrounds = 0;
    for (i16 code : kFormatCodes)
        if (!g.backgrounds[std::size_t(code)].text.isEmpty()) ++backgrounds;
    w.number(i16(pictures));
    w.number(i16(backgrounds));
    for (i16 code : kFormatCodes) {
        const BackgroundRecord& b = g.backgrounds[std::size_t(code)];
        if (b.text.isEmpty()) continue;
        w.number(code);
        w.text(b.text);
    }
    for (int i = 1; i <= g.pictures.count(); ++i) {
        const PictureRecord& r = g.pictures.at(i);
        if (r.isFree()) continue;
        w.number(r.sheet);
        w.text(r.file);
        w.number(r.top);
        w.number(r.left);
        w.number(r.width);
        w.number(r.height);
        w.number(r.displayMode);
    }

    for (const RecordTable<TextRecord>* table : {&g.freeText, &g.pageText}) {
        int n = 0;
        for (int i = 1; i <= table->count(); ++i)
            if (!table->at(i).isFree()) ++n;
        w.number(i16(n));
        for (int i = 1; i <= table->count(); ++i) {
            const TextRecord& r = table->at(i);
            if (r.isFree()) continue;
            // Blocks dragged above or left of the canvas come back at its edge.
            TextStyle style = r.style;
            style.top = std::max<i16>(style.top, 0);
            style.left = std::max<i16>(style.left, 0);
            w.number(r.sheet);
            w.blockText(r.text);
            w.style(style);
        }
    }

    int chars = 0;
    for (int i = 1; i <= g.charFields.count(); ++i)
        if (!g.charFields.at(i).valueFile.isEmpty()) ++chars;
    w.number(i16(chars));
    for (int i = 1; i <= g.charFields.count(); ++i) {
        const CharFieldRecord& r = g.charFields.at(i);
        if (r.valueFile.isEmpty()) continue;
        w.number(r.sheet);
        w.text(r.valueFile);
        w.style(r.style);
    }

    int nums = 0;
    for (int i = 1; i <= g.numFields.count(); ++i)
        if (!g.numFields.at(i).isFree()) ++nums;
    w.number(i16(nums));
    for (int i = 1; i <= g.numFields.count(); ++i) {
        const NumFieldRecord& r = g.numFields.at(i);
        if (r.isFree()) continue;
        w.number(r.sheet);
        w.number(r.digits);
        // Every field starts again at 1 when the project is opened.
        w.text(QStringLiteral("1"));
        w.flag(r.spineLink, 1);
        w.style(r.style);
    }

    w.flag(g.spinesHidden);
    return encodeFile(w.out);
}

bool writeProject(const ProjectData& data, const QString& path, QString* error)
{
    const QByteArray bytes = projectFileBytes(data);
    auto fail = [&](const QString& why) {
        if (error) *error = QStringLiteral("Cannot save the project \"%1\": %2").arg(path, why);
        return false;
    };
    if (path.isEmpty()) return fail(QStringLiteral("no file name."));
    QSaveFile f(path);
    // Unbuffered: a buffered QFileDevice takes a short write (file-size
    // limit, full disk) for success and commits a truncated file.
    if (!f.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) return fail(f.errorString());
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 n = f.write(bytes.constData() + done, bytes.size() - done);
        if (n <= 0) {
            const int err = errno;
            QString why = f.error() != QFileDevice::NoError ? f.errorString() : QString();
            if (why.isEmpty() || why == QLatin1String("Unknown error"))
                why = err ? QString::fromLocal8Bit(std::strerror(err)) : QStringLiteral("the file could not be written.");
            f.cancelWriting();
            return fail(why);
        }
        done += n;
    }
    if (!f.commit()) return fail(f.errorString());
    return true;
}

QString resolveBesideProject(const QString& path, const QString& projectDir)
{
    return BesideLookup(projectDir).resolve(path);
}

ProjectReadResult readProjectData(QIODevice& in, ProjectData& data, const QString& name, const QString& projectDir,
                                  const ProjectErrorReporter& reporter)
{
    Reader reader(in, data, name, projectDir, reporter);
    if (!reader.detectEncoding(in)) {
        // Not seekable: read as Windows-1252 from where it stands.
        reader.setUtf8(false);
    }
    return reader.run();
}

ProjectReadResult readProject(const QString& path, ProjectData& g, const ProjectErrorReporter& reporter)
{
    g.fileName = path;
    g.filePath.clear();
    const QFileInfo info(path);
    const QString name = info.fileName();
    auto refuse = [&](const QString& why) {
        if (reporter) reporter(QStringLiteral("Cannot open the project \"%1\": %2").arg(path, why), errorTitle());
        ProjectReadResult r;
        r.errors = 1;
        return r;
    };
    if (!info.exists()) return refuse(QStringLiteral("the file does not exist."));
    if (info.isDir()) return refuse(QStringLiteral("it is a folder."));
    // Devices and pipes could feed the reader forever, or block the open.
    if (!info.isFile()) return refuse(QStringLiteral("it is not a regular file."));
    if (info.size() > kMaxProjectFileBytes)
        return refuse(QStringLiteral("the file is too large to be a project (%1 MB).").arg(info.size() >> 20));
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return refuse(f.errorString());
    return readProjectData(f, g, name, info.absolutePath(), reporter);
}

}  // namespace jk
