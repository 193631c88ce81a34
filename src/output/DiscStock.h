#pragma once
// Disc-label stock: where on a sheet of label paper the disc label goes.
// CDRTYPE.TXT holds one record of four items per stock: name, horizontal and
// vertical offset in millimetres, description. The offsets place the disc
// canvas (120 mm square, the label centred on it) from the paper's top-left
// corner, so a stock's offsets are its first label's centre minus 60 mm.
// Widget-free: the stock dialog and the headless print command read it.
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace jk::print {

struct DiscStock {
    QString name;
    double xMm = 0;  // canvas's left edge from the paper's left edge
    double yMm = 0;  // canvas's top edge from the paper's top edge
    QString description;
};

// The disc canvas is this square; the label is centred on it.
constexpr double kDiscCanvasMm = 120.0;
// The printed disc: everything outside this radius and inside the centre
// hole's is left white.
constexpr double kDiscRadiusMm = 59.0;
constexpr double kDiscHoleRadiusMm = 16.4;
// Offsets outside this range cannot be a label on any paper a printer takes:
// the record is skipped.
constexpr double kMinStockOffsetMm = -60.0;
constexpr double kMaxStockOffsetMm = 1000.0;

struct DiscStockList {
    std::vector<DiscStock> stocks;  // file order
    QStringList problems;           // one line per skipped record, or why the file gave none
};

// Reads a stock list. Records with fewer than four items, an empty name, or
// offsets that are not numbers in the range above are skipped with a line in
// `problems`; so are lines of more than a few kilobytes and anything past the
// first megabyte. A missing or unreadable file gives no stocks and a problem.
DiscStockList readDiscStocks(const QString& path);
// The same from bytes (a file's content).
DiscStockList parseDiscStocks(const QByteArray& data);

// The stock of that name (exact, then ignoring case); none when absent.
std::optional<DiscStock> findDiscStock(const std::vector<DiscStock>& stocks, const QString& name);

// Whether the disc (radius 59 mm around the canvas centre) lies wholly on
// paper of this size (millimetres). A stock for another paper can put it
// partly off the sheet: the caller warns before printing.
bool discFitsPaper(const DiscStock& stock, QSizeF paperMm);

// The stock list shipped beside the program (or in its installed data folder).
QString discStockFile();

}  // namespace jk::print
