#include "companions/Catalogue.h"
#include "platform/Pictures.h"
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QPainter>
#include <QRegularExpression>
#include <QTextOption>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>
#include <atomic>
#include <numeric>

namespace jk::catalogue {

namespace {

constexpr double kMarginMm = 15;  // more than any printer leaves unprinted
constexpr double kHeaderMm = 10;
constexpr double kMmPerInch = 25.4;
const QColor kGrey(110, 110, 110);
const QColor kRule(190, 190, 190);

QFont plainFont(double points, bool bold = false)
{
    QFont f(QStringLiteral("Liberation Sans"));
    f.setPointSizeF(points);
    f.setBold(bold);
    return f;
}

QRectF toDots(const QRectF& mm, double dotsPerMm)
{
    return {mm.x() * dotsPerMm, mm.y() * dotsPerMm, mm.width() * dotsPerMm, mm.height() * dotsPerMm};
}

// The order of the picture dialog's file list: by name, ignoring case.
void sortNames(QStringList& names)
{
    std::sort(names.begin(), names.end(),
              [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
}

void paintHeader(QPainter& p, const QRectF& header, const QString& title, const QString& pageText)
{
    p.save();
    p.setPen(Qt::black);
    const QFont pageFont = plainFont(8);
    const QFontMetricsF pm(pageFont, p.device());
    const double pageWidth = pm.horizontalAdvance(pageText);
    p.setFont(pageFont);
    p.drawText(header, Qt::AlignRight | Qt::AlignVCenter, pageText);
    const QFont titleFont = plainFont(11, true);
    const QFontMetricsF tm(titleFont, p.device());
    p.setFont(titleFont);
    const double room = header.width() - pageWidth - pm.averageCharWidth() * 4;
    p.drawText(header, Qt::AlignLeft | Qt::AlignVCenter, tm.elidedText(title, Qt::ElideMiddle, room));
    p.setPen(QPen(kRule, 0));
    p.drawLine(header.bottomLeft(), header.bottomRight());
    p.restore();
}

}  // namespace

// ---- Pages

QRectF PageGrid::cellRect(int slot) const
{
    const int row = slot / columns, column = slot % columns;
    return {area.left() + column * cell.width(), area.top() + row * cell.height(), cell.width(), cell.height()};
}

PageGrid pageGrid(QSizeF paperMm, QSizeF minCell)
{
    PageGrid g;
    const QRectF inside(kMarginMm, kMarginMm, paperMm.width() - 2 * kMarginMm, paperMm.height() - 2 * kMarginMm);
    g.header = QRectF(inside.left(), inside.top(), inside.width(), kHeaderMm);
    g.area = QRectF(inside.left(), inside.top() + kHeaderMm + 2, inside.width(), inside.height() - kHeaderMm - 2);
    g.columns = std::max(1, int(g.area.width() / minCell.width()));
    g.rows = std::max(1, int(g.area.height() / minCell.height()));
    g.cell = QSizeF(g.area.width() / g.columns, g.area.height() / g.rows);
    return g;
}

int pageCount(const Catalogue& catalogue, QSizeF paperMm)
{
    return pageGrid(paperMm, catalogue.minCell()).pages(catalogue.count());
}

bool print(const Catalogue& catalogue, const print::PrintTarget& target, const Texts& texts, QString* error)
{
    print::PageDevice dev;
    const QString title = catalogue.title();
    if (!dev.open(target, QPageLayout::Portrait, title, texts, error)) return false;
    const PageGrid grid = pageGrid(dev.paper().size(QPageSize::Millimeter), catalogue.minCell());
    const int pages = grid.pages(catalogue.count());
    const double dpm = dev.dotsPerMm();
    QPainter& p = dev.painter();
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.setRenderHint(QPainter::Antialiasing);
    for (int page = 0; page < pages; ++page) {
        if (page > 0 && !dev.newPage(QPageLayout::Portrait)) {
            dev.cancel();
            if (error) *error = texts.msg(Msg::PrintJobFailed) + u' ' + title;
            return false;
        }
        paintHeader(p, toDots(grid.header, dpm), title, texts.msg(Msg::CataloguePage).arg(page + 1).arg(pages));
        for (int slot = 0; slot < grid.perPage(); ++slot) {
            const int index = page * grid.perPage() + slot;
            if (index >= catalogue.count()) break;
            const QRectF cell = toDots(grid.cellRect(slot), dpm);
            p.save();
            p.setClipRect(cell);
            catalogue.paintEntry(p, index, cell, dpm);
            p.restore();
        }
    }
    return dev.finish(error);
}

// ---- Fonts

std::vector<FontEntry> installedFamilies(const QString& latinSample)
{
    // One entry a family: fontconfig lists a family once for each foundry
    // that makes it ("Nimbus Sans [urw]", "Nimbus Sans [UKWN]"), and the
    // generic names (Serif, Monospace) only stand for another family.
    static const QRegularExpression foundry(QStringLiteral("\\s*\\[[^\\]]*\\]$"));
    auto plain = [](QString name) { return name.remove(foundry); };
    QStringList families;
    for (const QString& f : QFontDatabase::families()) {
        if (QFontDatabase::isPrivateFamily(f)) continue;
        const QString name = plain(f);
        if (plain(QFontInfo(QFont(f)).family()).compare(name, Qt::CaseInsensitive) != 0) continue;
        if (!families.contains(name, Qt::CaseInsensitive)) families << name;
    }
    sortNames(families);
    std::vector<FontEntry> out;
    for (const QString& f : families) {
        const QList<QFontDatabase::WritingSystem> systems = QFontDatabase::writingSystems(f);
        FontEntry e{f, latinSample, true};
        // A symbol font shows its symbols in the sample; its name needs a face with letters.
        if (systems.contains(QFontDatabase::Symbol)) {
            e.latin = false;
        } else if (!systems.isEmpty() && !systems.contains(QFontDatabase::Latin)) {
            e.latin = false;
            const QString own = QFontDatabase::writingSystemSample(systems.first());
            if (!own.isEmpty()) e.sample = own;
        }
        out.push_back(e);
    }
    return out;
}

FontCatalogue::FontCatalogue(std::vector<FontEntry> fonts, const Texts& texts) : fonts_(std::move(fonts)), texts_(texts) {}

QString FontCatalogue::title() const { return texts_.msg(Msg::FontCatalogueTitle).arg(count()); }

QSizeF FontCatalogue::minCell() const { return {150, 15}; }

void FontCatalogue::paintEntry(QPainter& p, int index, const QRectF& cell, double dotsPerMm) const
{
    const FontEntry& e = fonts_.at(std::size_t(index));
    const double pad = dotsPerMm;
    const double width = cell.width() - 2 * pad;
    // A symbol font would show its name as symbols: it gets a plain face.
    QFont name = e.latin ? QFont(e.family) : plainFont(12);
    name.setPointSizeF(14);
    QFontMetricsF nm(name, p.device());
    // A long name is set smaller rather than cut, so it stays whole.
    const double advance = nm.horizontalAdvance(e.family);
    if (advance > width) {
        name.setPointSizeF(std::max(6.0, 14 * width / advance));
        nm = QFontMetricsF(name, p.device());
    }
    p.setPen(Qt::black);
    p.setFont(name);
    double y = cell.top() + pad + nm.ascent();
    p.drawText(QPointF(cell.left() + pad, y), e.family);

    QFont sample(e.family);
    sample.setPointSizeF(10);
    const QFontMetricsF sm(sample, p.device());
    y += nm.descent() + pad + sm.ascent();
    p.setFont(sample);
    p.setPen(kGrey);
    p.drawText(QPointF(cell.left() + pad, y), sm.elidedText(e.sample, Qt::ElideRight, width));
    p.setPen(QPen(kRule, 0));
    p.drawLine(QPointF(cell.left(), cell.bottom() - 1), QPointF(cell.right(), cell.bottom() - 1));
}

// ---- Pictures

QStringList pictureFiles(const QString& folder)
{
    QStringList filters;
    for (const QString& f : QString::fromLatin1(platform::kPicturePattern).split(u';')) filters << f;
    // The patterns match ignoring case, as the picture dialog's list does.
    QStringList names = QDir(folder).entryList(filters, QDir::Files | QDir::Readable);
    sortNames(names);
    return names;
}

QSizeF thumbnailBox() { return {40, 34}; }

QSizeF thumbnailSizeMm(QSize pictureSize, QSizeF box)
{
    if (pictureSize.isEmpty()) return {};
    const QSizeF natural = QSizeF(pictureSize) * (kMmPerInch / kPictureDpi);
    if (natural.width() <= box.width() && natural.height() <= box.height()) return natural;
    return natural.scaled(box, Qt::KeepAspectRatio);
}

PictureEntry loadThumbnail(const QString& path, QString* error)
{
    PictureEntry e;
    e.name = QFileInfo(path).fileName();
    QString why;
    QImage picture = platform::loadPicture(path, &why);
    if (picture.isNull()) {
        if (error) *error = why;
        return e;
    }
    e.size = picture.size();
    const QSize most = (thumbnailSizeMm(e.size, thumbnailBox()) * (kThumbnailDpi / kMmPerInch)).toSize();
    if (picture.width() > most.width() || picture.height() > most.height())
        picture = picture.scaled(most, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    // Three bytes a pixel where there is no transparency: a folder of
    // hundreds of pictures stays small in memory.
    e.thumb = picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                               : QImage::Format_RGB888);
    return e;
}

PictureSet loadPictures(const QStringList& paths, const std::function<void(int, int)>& progress)
{
    const int total = int(paths.size());
    const std::size_t n = std::size_t(total);
    std::vector<PictureEntry> entries(n);
    std::vector<QString> errors(n);
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    std::atomic<int> done{0};
    // A pool of our own: the caller may itself run on the global pool.
    QThreadPool pool;
    pool.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
    QtConcurrent::blockingMap(&pool, order, [&](int i) {
        entries[std::size_t(i)] = loadThumbnail(paths.at(i), &errors[std::size_t(i)]);
        const int n = ++done;
        if (progress) progress(n, total);
    });
    PictureSet set;
    for (int i = 0; i < total; ++i) {
        PictureEntry& e = entries[std::size_t(i)];
        if (e.thumb.isNull()) set.skipped << e.name + QStringLiteral(": ") + errors[std::size_t(i)];
        else set.pictures.push_back(std::move(e));
    }
    return set;
}

PictureCatalogue::PictureCatalogue(QString folder, PictureSet pictures, const Texts& texts)
    : folder_(std::move(folder)), set_(std::move(pictures)), texts_(texts)
{
}

QString PictureCatalogue::title() const
{
    return texts_.msg(Msg::PictureCatalogueTitle).arg(QDir::toNativeSeparators(folder_));
}

QSizeF PictureCatalogue::minCell() const { return {44, 50}; }

void PictureCatalogue::paintEntry(QPainter& p, int index, const QRectF& cell, double dotsPerMm) const
{
    const PictureEntry& e = set_.pictures.at(std::size_t(index));
    const QSizeF boxMm = thumbnailBox();
    const QRectF box(cell.center().x() - boxMm.width() * dotsPerMm / 2, cell.top() + 2 * dotsPerMm,
                     boxMm.width() * dotsPerMm, boxMm.height() * dotsPerMm);
    const QSizeF drawn = thumbnailSizeMm(e.size, boxMm) * dotsPerMm;
    QRectF where(QPointF(), drawn);
    where.moveCenter(box.center());
    p.drawImage(where, e.thumb);
    p.setPen(QPen(kRule, 0));
    p.drawRect(where);

    // The name under it, on up to two lines, then the size in pixels.
    const QFont nameFont = plainFont(7.5);
    const QFontMetricsF nm(nameFont, p.device());
    const QRectF nameBox(cell.left() + dotsPerMm, box.bottom() + dotsPerMm, cell.width() - 2 * dotsPerMm,
                         nm.lineSpacing() * 2);
    QTextOption wrap(Qt::AlignHCenter | Qt::AlignTop);
    wrap.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    p.setFont(nameFont);
    p.setPen(Qt::black);
    // Two lines' worth of a very long name, its middle left out.
    p.drawText(nameBox, nm.elidedText(e.name, Qt::ElideMiddle, nameBox.width() * 1.8), wrap);
    const QFont sizeFont = plainFont(6.5);
    p.setFont(sizeFont);
    p.setPen(kGrey);
    p.drawText(QRectF(nameBox.left(), nameBox.bottom(), nameBox.width(), nm.lineSpacing()),
               Qt::AlignHCenter | Qt::AlignTop,
               QStringLiteral("%1 \u00d7 %2").arg(e.size.width()).arg(e.size.height()));
}

}  // namespace jk::catalogue
