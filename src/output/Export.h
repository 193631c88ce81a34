#pragma once
// Export: a sheet into image files, off screen through the sheets' one
// drawing path, in full colour. Raster formats (BMP 24-bit, JPEG, TIFF with
// LZW, PNG) at a chosen resolution; PDF and SVG as vectors at real size with
// text as text; EPS made from the PDF by Ghostscript (text as outlines,
// pictures at up to the export resolution). Every file is written
// beside its target and renamed over it once all of a sheet's files are
// complete, so a failure leaves no partial file; temporary files live in
// the system's temporary folder and are always removed. Widget-free: the
// main window's Export command and the headless --export use it alike.
#include "render/SheetRenderer.h"
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace jk {
class Project;
struct Texts;
}

namespace jk::exporting {

// In the save dialog's order.
enum class ImageFormat { Bmp, Jpeg, Eps, Tiff, Png, Pdf, Svg };

inline constexpr int kDefaultDpi = 300;
// The save dialog's filter and default extension (without the dot).
QString dialogFilter();
inline constexpr char kDefaultSuffix[] = "bmp";

// The format named by an extension without the dot (bmp, jpg/jpeg,
// eps, tif/tiff, png, pdf, svg), in any letter case.
std::optional<ImageFormat> formatOfSuffix(const QString& suffix);
std::optional<ImageFormat> formatOfName(const QString& path);
QString suffixOf(ImageFormat f);
// The name a chosen file is written under: itself when its extension names
// a format, else with the default extension added.
QString exportName(const QString& chosen);

// One file of an export: a page of a sheet.
struct Page {
    int code = 0;
    sheet::RenderOptions options;
    QString path;
};

// The files Export writes for a sheet under the chosen name: a booklet or a
// paper jacket writes its text page as NAME1.ext and its picture page as
// NAME2.ext; a disc label is written without its border and background,
// and unmasked. `shown` is how the sheet's window shows it: its stacking
// order and spines are kept, its selection marks and page are not.
std::vector<Page> sheetPages(const Project& project, int code, const QString& path, const sheet::RenderOptions& shown);
std::vector<Page> sheetPages(const Project& project, int code, const QString& path);

struct Result {
    bool ok = false;
    QStringList written;  // the files now in place
    QString error;        // one line: what failed, and for which file
};

// Writes the pages in the format, rasters at dpi: all of them or none.
Result writePages(const Project& project, const std::vector<Page>& pages, ImageFormat format, int dpi,
                  const Texts& texts);

}  // namespace jk::exporting
