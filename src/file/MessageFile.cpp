#include "file/MessageFile.h"
#include <QFile>
#include <QHash>
#include <QStringDecoder>

namespace jk {

namespace {
constexpr qint64 kMaxMessageFileBytes = 4 * 1024 * 1024;

bool isBlank(QChar c) { return c == u' ' || c == u'\t'; }
}  // namespace

QString decodeText(const QByteArray& data)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString s = utf8.decode(data);
    if (!utf8.hasError()) return s;
    QStringDecoder cp1252("windows-1252");
    if (cp1252.isValid()) return cp1252.decode(data);
    return QString::fromLatin1(data);
}

QStringList readListItems(const QByteArray& data, int maxItems)
{
    const QString text = decodeText(data);
    QStringList items;
    const qsizetype n = text.size();
    qsizetype i = 0;
    while (i < n && items.size() < maxItems) {
        while (i < n && isBlank(text[i])) ++i;
        QString item;
        if (i < n && text[i] == u'"') {
            qsizetype close = text.indexOf(u'"', i + 1);
            if (close < 0) close = n;
            item = text.mid(i + 1, close - i - 1);
            i = close + 1;
            // Whatever follows the closing quote up to the separator is dropped.
            while (i < n && text[i] != u',' && text[i] != u'\n' && text[i] != u'\r') ++i;
        } else {
            qsizetype start = i;
            while (i < n && text[i] != u',' && text[i] != u'\n' && text[i] != u'\r') ++i;
            item = text.mid(start, i - start).trimmed();
        }
        items.append(item);
        if (i < n) {
            if (text[i] == u',') {
                ++i;
                // A comma at the end of a line ends the item only.
                if (i < n && text[i] == u'\r') ++i;
                if (i < n && text[i] == u'\n') ++i;
            } else {
                if (text[i] == u'\r') ++i;
                if (i < n && text[i] == u'\n') ++i;
            }
        }
    }
    return items;
}

const QStringList& menuCaptionOrder()
{
    static const QStringList order = {
        "Mfile", "newsheet", "Openfile", "MCURPROJ", "AddForm", "Mremove", "savefilefirst", "saveas",
        "Exportshhet", "Capture", "imprime", "IMPPRJ", "PRNSELECT", "PRTFNTCAT", "PRTPICCAT",
        "PREFERENCE", "quit", "Medit", "ClipCopy", "clipcut", "Clipaste", "mtools", "Minsert",
        "Backpic", "InsertPic", "Insertxt", "Insertext", "Txtfold", "MneuField", "FieldCharacter",
        "FieldNumeric", "MBTF", "MSTB", "Tools", "Mwind", "WCasc", "WtileH", "WTILEV", "ArrIcons",
        "Mhelp", "Helpprog", "Tutorial", "about",
        "EditObj", "DelOBJ", "MoveObj", "resObj",
        "PicChg", "ToolHide", "MPCS", "MPPRJ", "MFPrnSelect", "voirnext", "VoirPrevious", "raz"};
    return order;
}

QString menuCaption(const Texts& t, const QString& control)
{
    static const QHash<QString, QString> shared = {
        {"Picedit", "EditObj"}, {"AAEdit", "EditObj"}, {"Nedit", "EditObj"},
        {"DelPic", "DelOBJ"}, {"AADelete", "DelOBJ"}, {"NDelete", "DelOBJ"},
        {"PicMove", "MoveObj"}, {"AAMove", "MoveObj"}, {"Nmove", "MoveObj"},
        {"PicRes", "resObj"}, {"Plus1", "voirnext"}, {"Moins1", "VoirPrevious"}};
    const QString key = shared.value(control, control);
    const qsizetype i = menuCaptionOrder().indexOf(key);
    return i < 0 ? QString() : t.menuCaptions.at(std::size_t(i));
}

Texts textsFromEntries(const QStringList& entries)
{
    Texts t;
    int pos = 0;
    auto next = [&]() { return pos < entries.size() ? entries.at(pos++) : (++pos, QString()); };
    for (auto& s : t.splash) s = next();
    for (int i = 0; i < 5; ++i) t.formatNames[std::size_t(i)] = next();
    for (int i = 0; i < 5; ++i)
        t.formatNames[std::size_t(i + 5)] = t.formatNames[std::size_t(i)].right(3) + u']';
    for (auto& s : t.menuCaptions) s = next();
    for (auto& s : t.fitCaptions) s = next();
    for (auto& s : t.toolTips) s = next();
    for (int i = 0; i < 76; ++i) t.messages[std::size_t(i)] = next();
    for (auto& s : t.spineCaptions) s = next();
    for (auto& s : t.extraCaptions) s = next();
    for (int i = 76; i < kFirstAppendedMessage; ++i) t.messages[std::size_t(i)] = next();
    // Appended messages keep their built-in English until the file names them.
    for (int i = kFirstAppendedMessage; i < kMessageCount && pos < entries.size(); ++i) {
        const QString s = next();
        if (!s.isEmpty()) t.messages[std::size_t(i)] = s;
    }
    return t;
}

Texts loadMessageFile(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return textsFromEntries({});
    return textsFromEntries(readListItems(f.read(kMaxMessageFileBytes),
                                          kMessageFileEntries + kMessageCount - kFirstAppendedMessage));
}

QString plainCaption(QString caption)
{
    caption.remove(u'&');
    while (caption.endsWith(u'.')) caption.chop(1);
    return caption.trimmed();
}

}  // namespace jk
