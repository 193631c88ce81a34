#include "output/PageDevice.h"
#include "platform/SystemServices.h"
#include <QDateTime>
#include "file/Settings.h"
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QSaveFile>

namespace jk::print {

namespace {

constexpr double kMmPerInch = 25.4;
// Resolution of a PDF: fine enough for 0.1 mm placement and full-resolution
// pictures; text and shapes are vectors anyway.
constexpr int kPdfDpi = 1200;

QPageSize defaultPaper()
{
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    const QPageSize size = info.isNull() ? QPageSize() : info.defaultPageSize();
    return size.isValid() ? size : QPageSize(QPageSize::A4);
}

QPrinterInfo printerInfo(const QString& name)
{
    return name.isEmpty() ? QPrinterInfo::defaultPrinter() : QPrinterInfo::printerInfo(name);
}

}  // namespace

QPageSize targetPageSize(const PrintTarget& target)
{
    if (target.device) return target.device->pageLayout().pageSize();
    if (!target.pdfPath.isEmpty()) return defaultPaper();
    const QPrinterInfo info = printerInfo(target.printer);
    if (info.isNull()) return {};
    const QPageSize size = info.defaultPageSize();
    return size.isValid() ? size : QPageSize(QPageSize::A4);
}

PrinterCalibration storedCalibration(const QString& printer)
{
    return app().settings.calibrations.value(printer);
}

QString describeCalibration(const PrinterCalibration& c, const Texts& texts)
{
    return texts.msg(Msg::CalibrationValues)
        .arg(c.offsetXMm, 0, 'f', 2)
        .arg(c.offsetYMm, 0, 'f', 2)
        .arg(c.scaleXPercent, 0, 'f', 2)
        .arg(c.scaleYPercent, 0, 'f', 2);
}

PageDevice::PageDevice() = default;

PageDevice::~PageDevice()
{
    if (!done_) cancel();
}

bool PageDevice::open(const PrintTarget& target, QPageLayout::Orientation first, const QString& jobName,
                      const Texts& texts, QString* error)
{
    texts_ = &texts;
    jobName_ = jobName;
    auto fail = [&](const QString& why) {
        if (file_) file_->cancelWriting();
        done_ = true;
        if (error) *error = why;
        return false;
    };
    if (target.device) {
        preview_ = true;
        target.device->setFullPage(true);
        target.device->setPageOrientation(QPageLayout::Portrait);
        paper_ = target.device->pageLayout().pageSize();
        dev_ = target.device;
    } else if (!target.pdfPath.isEmpty()) {
        pdfPath_ = target.pdfPath;
        file_ = std::make_unique<QSaveFile>(target.pdfPath);
        if (!file_->open(QIODevice::WriteOnly))
            return fail(texts.msg(Msg::PrintPdfNotWritten) + u' ' + target.pdfPath + QStringLiteral(": ") +
                        file_->errorString());
        writer_ = std::make_unique<QPdfWriter>(file_.get());
        writer_->setCreator(QStringLiteral("Jewelcase Studio"));
        writer_->setTitle(jobName);
        writer_->setResolution(kPdfDpi);
        paper_ = defaultPaper();
        writer_->setPageLayout(QPageLayout(paper_, first, QMarginsF(0, 0, 0, 0)));
        dev_ = writer_.get();
    } else {
        // Checked now: the printer may have gone since it was chosen.
        const QPrinterInfo info = printerInfo(target.printer);
        if (info.isNull())
            return fail(target.printer.isEmpty() ? texts.msg(Msg::NoPrinter)
                                                 : texts.msg(Msg::PrinterUnavailable) + u' ' + target.printer);
        const platform::QueueState queue = platform::queueState(info.printerName());
        if (!queue.accepting)
            return fail(texts.msg(Msg::PrinterNotAccepting) + u' ' + info.printerName() + QStringLiteral(" (") +
                        queue.reason + u')');
        submittedSince_ = QDateTime::currentSecsSinceEpoch() - 1;
        printer_ = std::make_unique<QPrinter>(info, QPrinter::HighResolution);
        printer_->setDocName(jobName);
        printer_->setCopyCount(1);
        printer_->setFullPage(true);
        printer_->setPageOrientation(first);
        paper_ = printer_->pageLayout().pageSize();
        dev_ = printer_.get();
    }
    calibration_ = target.calibration ? *target.calibration
                   : pdfPath_.isEmpty()   ? storedCalibration(printerName())
                                          : PrinterCalibration();
    // The settings never hold one out of range; a caller's value is refused
    // rather than pushing the page off the paper.
    if (!calibrationInRange(calibration_)) {
        return fail(texts.msg(Msg::CalibrationOutOfRange) + u' ' + describeCalibration(calibration_, texts));
    }
    // A point meant at P on the paper is drawn at offset + scale * P: the
    // printer's own shift and stretch then put it back at P.
    const double dots = dotsPerMm();
    calibrated_ = QTransform::fromTranslate(calibration_.offsetXMm * dots, calibration_.offsetYMm * dots)
                      .scale(calibration_.scaleXPercent / 100, calibration_.scaleYPercent / 100);
    if (!painter_.begin(dev_))
        return fail(printer_ || preview_ ? texts.msg(Msg::PrintJobFailed) + u' ' + printerName()
                                         : texts.msg(Msg::PrintPdfNotWritten) + u' ' + pdfPath_);
    turnPage(first);
    return true;
}

QPointF PageDevice::printableMm() const
{
    const QMarginsF m = dev_->pageLayout().margins(QPageLayout::Millimeter);
    // A turned page's left edge lies along the paper's bottom edge.
    return turned_ ? QPointF(m.bottom(), m.left()) : QPointF(m.left(), m.top());
}

double PageDevice::dotsPerMm() const { return dev_->logicalDpiX() / kMmPerInch; }

QString PageDevice::printerName() const
{
    if (printer_) return printer_->printerName();
    if (preview_) return static_cast<QPrinter*>(dev_)->printerName();
    return {};
}

bool PageDevice::newPage(QPageLayout::Orientation orientation)
{
    if (!preview_) dev_->setPageOrientation(orientation);
    if (!dev_->newPage()) return false;
    turnPage(orientation);
    return true;
}

void PageDevice::turnPage(QPageLayout::Orientation orientation)
{
    // Qt's print preview shows every page in one orientation: a landscape
    // page is drawn turned onto the portrait paper, as the printer turns it.
    turned_ = preview_ && orientation == QPageLayout::Landscape;
    QTransform turn;
    if (turned_) turn.translate(0, dev_->height()).rotate(-90);
    painter_.setWorldTransform(turn * calibrated_);
}

bool PageDevice::finish(QString* error)
{
    done_ = true;
    const bool ended = painter_.end();
    if (!ended && !preview_) {
        if (file_) file_->cancelWriting();
        if (error) *error = texts_->msg(Msg::PrintJobFailed) + u' ' + jobName_;
        return false;
    }
    // Qt hands the document to CUPS and does not say whether it was taken.
    if (printer_ && !platform::jobSubmitted(printer_->printerName(), jobName_, submittedSince_)) {
        if (error) *error = texts_->msg(Msg::PrintJobFailed) + u' ' + printer_->printerName();
        return false;
    }
    if (file_ && !file_->commit()) {
        if (error)
            *error = texts_->msg(Msg::PrintPdfNotWritten) + u' ' + pdfPath_ + QStringLiteral(": ") + file_->errorString();
        return false;
    }
    return true;
}

void PageDevice::cancel()
{
    done_ = true;
    if (printer_) printer_->abort();
    if (painter_.isActive()) painter_.end();
    if (file_) file_->cancelWriting();
}

}  // namespace jk::print
