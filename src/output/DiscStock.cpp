#include "output/DiscStock.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <cmath>

namespace jk::print {

namespace {

// A stock list is a few kilobytes; a bigger file is not one.
constexpr qint64 kMaxFileBytes = 1024 * 1024;
constexpr qsizetype kMaxLineChars = 4096;

std::optional<double> offsetMm(const QString& item)
{
    bool ok = false;
    const double v = item.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v) || v < kMinStockOffsetMm || v > kMaxStockOffsetMm) return std::nullopt;
    return v;
}

bool holdsControlCharacters(const QString& line)
{
    for (QChar c : line)
        if (c.unicode() < 0x20 && c != u'\t') return true;
    return false;
}

}  // namespace

DiscStockList parseDiscStocks(const QByteArray& data)
{
    DiscStockList out;
    const QString text = decodeText(data);
    const QStringList lines = text.split(QRegularExpression(QStringLiteral("\r\n|\n|\r")));
    for (qsizetype n = 0; n < lines.size(); ++n) {
        const QString& line = lines.at(n);
        if (line.trimmed().isEmpty()) continue;
        const QString where = QStringLiteral("line %1: ").arg(n + 1);
        if (line.size() > kMaxLineChars) {
            out.problems << where + QStringLiteral("too long, skipped");
            continue;
        }
        if (holdsControlCharacters(line)) {
            out.problems << where + QStringLiteral("not text, skipped");
            continue;
        }
        // One record a line: a short record must not pull in the next one.
        const QStringList items = readListItems(line.toUtf8(), 5);
        if (items.size() != 4) {
            out.problems << where + QStringLiteral("%1 items instead of 4, skipped").arg(items.size());
            continue;
        }
        const auto x = offsetMm(items.at(1));
        const auto y = offsetMm(items.at(2));
        if (items.at(0).trimmed().isEmpty()) {
            out.problems << where + QStringLiteral("no name, skipped");
        } else if (!x || !y) {
            out.problems << where + QStringLiteral("offsets \"%1\", \"%2\" are not millimetres between %3 and %4, skipped")
                                        .arg(items.at(1), items.at(2))
                                        .arg(kMinStockOffsetMm)
                                        .arg(kMaxStockOffsetMm);
        } else {
            out.stocks.push_back({items.at(0).trimmed(), *x, *y, items.at(3).trimmed()});
        }
    }
    if (out.stocks.empty() && out.problems.isEmpty()) out.problems << QStringLiteral("no stock in the list");
    return out;
}

DiscStockList readDiscStocks(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        DiscStockList out;
        out.problems << QStringLiteral("cannot read %1: %2").arg(path, f.errorString());
        return out;
    }
    DiscStockList out = parseDiscStocks(f.read(kMaxFileBytes));
    if (!f.atEnd()) out.problems << QStringLiteral("%1: only its first megabyte was read").arg(path);
    return out;
}

std::optional<DiscStock> findDiscStock(const std::vector<DiscStock>& stocks, const QString& name)
{
    for (const DiscStock& s : stocks)
        if (s.name == name) return s;
    for (const DiscStock& s : stocks)
        if (s.name.compare(name, Qt::CaseInsensitive) == 0) return s;
    return std::nullopt;
}

bool discFitsPaper(const DiscStock& stock, QSizeF paperMm)
{
    const double cx = stock.xMm + kDiscCanvasMm / 2, cy = stock.yMm + kDiscCanvasMm / 2;
    // A hair of tolerance: stock data comes to 0.1 mm.
    constexpr double e = 0.05;
    return cx - kDiscRadiusMm >= -e && cy - kDiscRadiusMm >= -e && cx + kDiscRadiusMm <= paperMm.width() + e &&
           cy + kDiscRadiusMm <= paperMm.height() + e;
}

QString discStockFile() { return QDir(paths::dataDir()).filePath(QStringLiteral("CDRTYPE.TXT")); }

}  // namespace jk::print
