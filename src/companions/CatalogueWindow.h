#pragma once
// The small window of the two catalogue programs: what the catalogue holds,
// the printer it goes to, and Preview, Print, Save as PDF and Close.
#include "companions/Catalogue.h"
#include <QWidget>
#include <memory>

class QLabel;
class QLayout;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace jk::catalogue {

class CatalogueWindow : public QWidget {
    Q_OBJECT
public:
    explicit CatalogueWindow(const QString& title, QWidget* parent = nullptr);

    // A row above the summary (the pictures catalogue's folder).
    void addTopRow(QLayout* row);
    // Work in progress: the buttons wait, a bar shows how far it got.
    void showProgress(const QString& what, int done, int total);
    // The catalogue to show and print; notes (pictures left out) are listed
    // below the summary.
    void setCatalogue(std::shared_ptr<const Catalogue> catalogue, const QStringList& notes);
    // Nothing to print, and why.
    void clearCatalogue(const QString& why);

    void preview();
    void printNow();
    void savePdf();

private:
    void updateSummary();
    void report(const QString& error);

    std::shared_ptr<const Catalogue> catalogue_;
    QLabel* summary_;
    QLabel* printer_;
    QProgressBar* progress_;
    QPlainTextEdit* notes_;
    QPushButton* previewButton_;
    QPushButton* printButton_;
    QPushButton* pdfButton_;
};

}  // namespace jk::catalogue
