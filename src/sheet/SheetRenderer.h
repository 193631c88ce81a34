#pragma once
// The one drawing path of a sheet. The window, the disc preview, printing and
// export all paint through paint(), which works in the canvas's twips; each
// caller only chooses the scale, so text stays vector text on a printer or in
// a PDF and pictures are drawn from their full-resolution source.
#include "sheet/SheetLayout.h"
#include <QImage>
#include <QSet>
#include <QString>
#include <functional>

class QPainter;

namespace jk::sheet {

struct RenderOptions {
    bool spines = true;          // the inlay's spines are shown
    bool textPage = false;       // the text page is shown (booklet, jacket)
    bool textPageBorder = true;  // the shown text page has its single line
    bool border = true;          // the canvas's single-line border
    bool discPreview = false;    // the disc label's hole and outside in white
    QSet<int> hiddenPictures;    // picture slots hidden on this sheet
};

// The options a sheet has when nothing in a window says otherwise.
RenderOptions defaultOptions(int code);

// Paints the sheet of the format with the painter already mapping canvas
// twips to the device (origin at the canvas's top-left corner). Draws, in
// this order: background, text blocks and fields, spines, text page,
// pictures, border, disc preview. Everything is clipped to the canvas.
void paint(QPainter& p, int code, const RenderOptions& o);

// Paints on any device at its own resolution, the canvas's corner at the
// painter's origin: sets up the twips scale for the device, then paint().
void paintOnDevice(QPainter& p, int code, const RenderOptions& o);

// The sheet as an image at dpi dots per inch (96 is real size on screen).
QImage renderImage(int code, double dpi, const RenderOptions& o);
inline QImage renderImage(int code, double dpi) { return renderImage(code, dpi, defaultOptions(code)); }

// The sheet as a one-page PDF at real size: the page is the canvas (PDF
// pages come in whole points, so it may be up to 0.18 mm smaller), no
// margins, text as text. False when the file cannot be written.
bool renderPdf(int code, const QString& path, const RenderOptions& o);
inline bool renderPdf(int code, const QString& path) { return renderPdf(code, path, defaultOptions(code)); }

// The twips-to-pixels factor of the disc preview's radii.
inline double pixelToTwips(double px) { return px * kTwipsPerPixel; }

// Pictures come from files through this loader (cached); the imaging seam
// replaces it with one that knows more formats.
using ImageLoader = std::function<QImage(const QString& path)>;
void setImageLoader(ImageLoader loader);
QImage loadPicture(const QString& path);
void clearPictureCache();

// A picture's actual size in twips (one image pixel per screen pixel).
QSize actualSizeTwips(const QString& path);

}  // namespace jk::sheet
