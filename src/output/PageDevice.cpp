#include "output/PageDevice.h"
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
        target.device->setPageOrientation(first);
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
        printer_ = std::make_unique<QPrinter>(info, QPrinter::HighResolution);
        printer_->setDocName(jobName);
        printer_->setCopyCount(1);
        printer_->setFullPage(true);
        printer_->setPageOrientation(first);
        paper_ = printer_->pageLayout().pageSize();
        dev_ = printer_.get();
    }
    if (!painter_.begin(dev_))
        return fail(printer_ || preview_ ? texts.msg(Msg::PrintJobFailed) + u' ' + printerName()
                                         : texts.msg(Msg::PrintPdfNotWritten) + u' ' + pdfPath_);
    return true;
}

QPointF PageDevice::printableMm() const
{
    const QMarginsF m = dev_->pageLayout().margins(QPageLayout::Millimeter);
    return {m.left(), m.top()};
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
    dev_->setPageOrientation(orientation);
    return dev_->newPage();
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
