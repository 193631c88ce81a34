#pragma once
// Where printed pages go: a printer (the whole run is one CUPS job), a PDF
// file (written beside its target and renamed over it once complete, so a
// failed or cancelled run leaves no partial file), or a printer handed over
// by Qt's print preview. Everything that prints - projects, calibration
// pages, catalogues - opens one of these and paints page after page.
#include "model/AppContext.h"
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPointF>
#include <QString>
#include <QTransform>
#include <memory>
#include <optional>

class QPagedPaintDevice;
class QPdfWriter;
class QPrinter;
class QSaveFile;

namespace jk::print {

struct PrintTarget {
    QString printer;  // a CUPS queue; empty: the user's default printer
    QString pdfPath;  // when set: the same pages into this PDF file instead of a printer
    // When set: paint onto this printer as it is (the print preview's); it is
    // neither opened as a job nor finished here.
    QPrinter* device = nullptr;
    // The printer's error to make up for on every page. Unset: a printer's
    // (or the preview's printer's) own from the settings, none for a PDF, so
    // files stay true to size unless asked.
    std::optional<PrinterCalibration> calibration;
};

// The calibration stored for that printer; none (identity) when it has none.
PrinterCalibration storedCalibration(const QString& printer);
// "offset 1.50 / -0.70 mm, scale 100.40 / 99.60 %".
QString describeCalibration(const PrinterCalibration& c, const Texts& texts);

// The paper a target prints on, portrait: the printer's default paper, or
// for a PDF the default printer's (A4 when there is none). Invalid when the
// printer named does not exist.
QPageSize targetPageSize(const PrintTarget& target);

class PageDevice {
public:
    PageDevice();
    ~PageDevice();  // cancels what was not finished
    PageDevice(const PageDevice&) = delete;
    PageDevice& operator=(const PageDevice&) = delete;

    // Opens the target and begins the first page. False with a one-line
    // reason (from texts' messages) when the printer is gone or the PDF
    // cannot be written.
    bool open(const PrintTarget& target, QPageLayout::Orientation first, const QString& jobName,
              const Texts& texts, QString* error);
    QPainter& painter() { return painter_; }
    QPagedPaintDevice* device() const { return dev_; }
    QPageSize paper() const { return paper_; }
    // The printable area's top-left corner on the paper, in millimetres, for
    // the page being painted.
    QPointF printableMm() const;
    // Device dots per millimetre.
    double dotsPerMm() const;
    QString printerName() const;  // empty for a PDF
    bool isPreview() const { return preview_; }
    // What every page is moved and stretched by, from the paper's corner.
    const PrinterCalibration& calibration() const { return calibration_; }

    bool newPage(QPageLayout::Orientation orientation);
    // Sends the job or renames the PDF over its target. False with a reason.
    bool finish(QString* error);
    // Drops the job, or leaves no PDF.
    void cancel();

private:
    const Texts* texts_ = nullptr;
    std::unique_ptr<QSaveFile> file_;
    std::unique_ptr<QPdfWriter> writer_;
    std::unique_ptr<QPrinter> printer_;
    QPagedPaintDevice* dev_ = nullptr;
    void turnPage(QPageLayout::Orientation orientation);

    QPainter painter_;
    QPageSize paper_;
    PrinterCalibration calibration_;
    QTransform calibrated_;  // device dots to device dots, set on every page
    QString pdfPath_, jobName_;
    qint64 submittedSince_ = 0;  // seconds since the epoch, when a printer job began
    bool preview_ = false;
    bool turned_ = false;  // a landscape page drawn turned on a portrait preview page
    bool done_ = false;
};

}  // namespace jk::print
