#include "companions/CatalogueWindow.h"
#include "platform/Services.h"
#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace pf = jk::platform;

namespace jk::catalogue {

CatalogueWindow::CatalogueWindow(const QString& title, QWidget* parent) : QWidget(parent)
{
    setWindowTitle(title);
    summary_ = new QLabel(this);
    summary_->setObjectName("summary");
    summary_->setWordWrap(true);
    summary_->setTextFormat(Qt::PlainText);
    printer_ = new QLabel(this);
    printer_->setObjectName("printer");
    progress_ = new QProgressBar(this);
    progress_->hide();
    notes_ = new QPlainTextEdit(this);
    notes_->setObjectName("notes");
    notes_->setReadOnly(true);
    notes_->setMaximumHeight(110);
    notes_->hide();

    previewButton_ = new QPushButton(tr("Pre&view..."), this);
    printButton_ = new QPushButton(tr("&Print"), this);
    pdfButton_ = new QPushButton(tr("Save as P&DF..."), this);
    auto* close = new QPushButton(tr("&Close"), this);
    printButton_->setDefault(true);
    connect(previewButton_, &QPushButton::clicked, this, &CatalogueWindow::preview);
    connect(printButton_, &QPushButton::clicked, this, &CatalogueWindow::printNow);
    connect(pdfButton_, &QPushButton::clicked, this, &CatalogueWindow::savePdf);
    connect(close, &QPushButton::clicked, this, &QWidget::close);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(previewButton_);
    buttons->addWidget(printButton_);
    buttons->addWidget(pdfButton_);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* top = new QVBoxLayout(this);
    top->addWidget(summary_);
    top->addWidget(printer_);
    top->addWidget(progress_);
    top->addWidget(notes_);
    top->addStretch(1);
    top->addLayout(buttons);
    resize(520, 200);
    clearCatalogue(QString());
}

void CatalogueWindow::addTopRow(QLayout* row)
{
    static_cast<QVBoxLayout*>(layout())->insertLayout(0, row);
}

void CatalogueWindow::showProgress(const QString& what, int done, int total)
{
    catalogue_.reset();
    summary_->setText(what);
    progress_->setRange(0, total);
    progress_->setValue(done);
    progress_->show();
    notes_->hide();
    for (QPushButton* b : {previewButton_, printButton_, pdfButton_}) b->setEnabled(false);
}

void CatalogueWindow::setCatalogue(std::shared_ptr<const Catalogue> catalogue, const QStringList& notes)
{
    catalogue_ = std::move(catalogue);
    progress_->hide();
    notes_->setPlainText(notes.join(u'\n'));
    notes_->setVisible(!notes.isEmpty());
    updateSummary();
}

void CatalogueWindow::clearCatalogue(const QString& why)
{
    catalogue_.reset();
    progress_->hide();
    notes_->hide();
    summary_->setText(why);
    updateSummary();
}

void CatalogueWindow::updateSummary()
{
    const QString printer = QPrinterInfo::defaultPrinterName();
    printer_->setText(printer.isEmpty() ? texts().msg(Msg::NoPrinter) : tr("Printer: %1").arg(printer));
    const bool ready = bool(catalogue_);
    previewButton_->setEnabled(ready);
    pdfButton_->setEnabled(ready);
    printButton_->setEnabled(ready && !printer.isEmpty());
    if (!ready) return;
    QPageSize paper = print::targetPageSize(print::PrintTarget{});
    if (!paper.isValid()) paper = QPageSize(QPageSize::A4);
    const int pages = pageCount(*catalogue_, paper.size(QPageSize::Millimeter));
    summary_->setText(catalogue_->title() + u'\n' +
                      (pages == 1 ? tr("1 page on %1").arg(paper.name()) : tr("%1 pages on %2").arg(pages).arg(paper.name())));
}

void CatalogueWindow::report(const QString& error)
{
    if (auto* m = pf::services().messages) m->show(error, windowTitle(), pf::Icon::Critical);
}

void CatalogueWindow::preview()
{
    if (!catalogue_) return;
    // The default printer's paper, or a PDF's when there is no printer.
    QPrinter printer(QPrinter::HighResolution);
    QPrintPreviewDialog dlg(&printer, this);
    dlg.setWindowTitle(windowTitle());
    dlg.resize(760, 900);
    const auto catalogue = catalogue_;
    connect(&dlg, &QPrintPreviewDialog::paintRequested, this, [this, catalogue](QPrinter* device) {
        print::PrintTarget target;
        target.device = device;
        QString error;
        if (!print(*catalogue, target, texts(), &error)) report(error);
    });
    dlg.exec();
}

void CatalogueWindow::printNow()
{
    if (!catalogue_) return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QString error;
    const bool ok = print(*catalogue_, print::PrintTarget{}, texts(), &error);
    QApplication::restoreOverrideCursor();
    if (!ok) report(error);
}

void CatalogueWindow::savePdf()
{
    if (!catalogue_) return;
    auto* files = pf::services().files;
    if (!files) return;
    const QString path = files->saveFile(pdfButton_->text().remove(u'&'), QDir::homePath(),
                                         QStringLiteral("PDF (*.pdf)"), QStringLiteral("pdf"));
    if (path.isEmpty()) return;
    print::PrintTarget target;
    target.pdfPath = path;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QString error;
    const bool ok = print(*catalogue_, target, texts(), &error);
    QApplication::restoreOverrideCursor();
    if (!ok) report(error);
}

}  // namespace jk::catalogue
