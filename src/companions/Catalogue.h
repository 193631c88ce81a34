#pragma once
// The two catalogues the companion programs print: the installed font
// families, and a contact sheet of a folder's pictures. Pages are laid out
// in millimetres on whatever paper the target has, and painted through the
// program's page device, so the printer, a PDF and the print preview get
// the very same pages. No widgets: the layout is tested on its own.
#include "model/AppContext.h"
#include "output/PageDevice.h"
#include <QFont>
#include <QImage>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

class QPainter;

namespace jk::catalogue {

// Cells of equal size in rows and columns below a header line, inside fixed
// margins that every printer can print.
struct PageGrid {
    QRectF header;  // the title line, mm on the paper
    QRectF area;    // where the cells go, mm on the paper
    QSizeF cell;    // mm
    int columns = 1, rows = 1;

    int perPage() const { return columns * rows; }
    int pages(int entries) const { return entries <= 0 ? 1 : (entries + perPage() - 1) / perPage(); }
    QRectF cellRect(int slot) const;  // slot 0 .. perPage()-1 on a page, left to right, top to bottom
};
// The grid of cells at least minCell large (stretched to fill the width).
PageGrid pageGrid(QSizeF paperMm, QSizeF minCell);

class Catalogue {
public:
    virtual ~Catalogue() = default;
    virtual QString title() const = 0;  // the header of every page and the job's name
    virtual int count() const = 0;
    virtual QSizeF minCell() const = 0;
    // Paints one entry into its cell; cell is in device dots.
    virtual void paintEntry(QPainter& p, int index, const QRectF& cell, double dotsPerMm) const = 0;
};

// Opens the target, paints every page and finishes the job. False with a
// one-line reason when the printer or the PDF fails.
bool print(const Catalogue& catalogue, const print::PrintTarget& target, const Texts& texts, QString* error);
// Pages the catalogue takes on this paper.
int pageCount(const Catalogue& catalogue, QSizeF paperMm);

// ---- Fonts

struct FontEntry {
    QString family;
    QString sample;      // in the family's own face
    bool latin = true;   // false: the name is set in a plain face (a symbol font shows no letters)
};
// The families a user can choose, once each, sorted ignoring case; private
// (system) families and generic names (Serif, Monospace) are left out.
// latinSample is used for every family that has Latin letters (and for
// symbol fonts, to show their symbols), the writing system's own sample
// for the others.
std::vector<FontEntry> installedFamilies(const QString& latinSample);

class FontCatalogue : public Catalogue {
public:
    FontCatalogue(std::vector<FontEntry> fonts, const Texts& texts);
    QString title() const override;
    int count() const override { return int(fonts_.size()); }
    QSizeF minCell() const override;
    void paintEntry(QPainter& p, int index, const QRectF& cell, double dotsPerMm) const override;

private:
    std::vector<FontEntry> fonts_;
    const Texts& texts_;
};

// ---- Pictures

// A thumbnail is never larger than its picture at 96 dpi, nor than its box.
constexpr double kPictureDpi = 96;
// Thumbnails keep this resolution in their box: sharp on paper, small in memory.
constexpr double kThumbnailDpi = 150;

struct PictureEntry {
    QString name;   // file name
    QSize size;     // the picture's own size in pixels
    QImage thumb;   // at most the thumbnail box at kThumbnailDpi
};
struct PictureSet {
    std::vector<PictureEntry> pictures;  // in file-name order
    QStringList skipped;                 // "name: reason", for the files that cannot be read
};

// The picture files of a folder (the picture dialog's nine formats), sorted
// by name ignoring case.
QStringList pictureFiles(const QString& folder);
// The box a thumbnail is fitted into, mm.
QSizeF thumbnailBox();
// One picture through the imaging seam, shrunk to its thumbnail; a null
// thumbnail with the reason when the file cannot be read.
PictureEntry loadThumbnail(const QString& path, QString* error);
// Every picture of the list, decoded in parallel; progress(done, total) is
// called on the calling thread as they come in.
PictureSet loadPictures(const QStringList& paths, const std::function<void(int, int)>& progress = {});
// The mm a thumbnail takes on paper: its picture at 96 dpi, shrunk to fit
// the box keeping its proportions, never enlarged.
QSizeF thumbnailSizeMm(QSize pictureSize, QSizeF box);

class PictureCatalogue : public Catalogue {
public:
    PictureCatalogue(QString folder, PictureSet pictures, const Texts& texts);
    QString title() const override;
    int count() const override { return int(set_.pictures.size()); }
    QSizeF minCell() const override;
    void paintEntry(QPainter& p, int index, const QRectF& cell, double dotsPerMm) const override;
    const PictureSet& pictures() const { return set_; }

private:
    QString folder_;
    PictureSet set_;
    const Texts& texts_;
};

}  // namespace jk::catalogue
