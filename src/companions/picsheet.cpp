// picsheet: a contact sheet of the pictures of a folder, thumbnails with
// their file names, printed, previewed or written to a PDF.
#include "companions/CatalogueWindow.h"
#include "companions/Companion.h"
#include "ui/widgets/RealServices.h"
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTextStream>
#include <QtConcurrent/QtConcurrentRun>

namespace cat = jk::catalogue;

namespace {

// The folder's pictures, or the reason why there is nothing to print.
struct Folder {
    QStringList paths;
    QString problem;
};

Folder readFolder(const QString& folder)
{
    const jk::Texts& t = jk::texts();
    const QFileInfo info(folder);
    if (!info.isDir() || !info.isReadable())
        return {{}, t.msg(jk::Msg::CatalogueNotFolder) + u' ' + QDir::toNativeSeparators(folder)};
    Folder f;
    for (const QString& name : cat::pictureFiles(folder)) f.paths << QDir(folder).filePath(name);
    if (f.paths.isEmpty()) f.problem = t.msg(jk::Msg::CatalogueNoPictures) + u' ' + QDir::toNativeSeparators(folder);
    return f;
}

QStringList skippedNotes(const cat::PictureSet& set)
{
    QStringList notes;
    for (const QString& s : set.skipped) notes << jk::texts().msg(jk::Msg::CataloguePictureSkipped) + u' ' + s;
    return notes;
}

int writePdf(const QString& pdf, const QString& folder)
{
    QTextStream err(stderr);
    const Folder f = readFolder(folder);
    if (!f.problem.isEmpty()) {
        err << "picsheet: " << f.problem << Qt::endl;
        return 1;
    }
    cat::PictureSet set = cat::loadPictures(f.paths);
    for (const QString& note : skippedNotes(set)) err << "picsheet: " << note << Qt::endl;
    if (set.pictures.empty()) {
        err << "picsheet: " << jk::texts().msg(jk::Msg::CatalogueNoPictures) << u' ' << QDir::toNativeSeparators(folder)
            << Qt::endl;
        return 1;
    }
    const cat::PictureCatalogue catalogue(QDir(folder).absolutePath(), std::move(set), jk::texts());
    jk::print::PrintTarget target;
    target.pdfPath = pdf;
    QString error;
    if (cat::print(catalogue, target, jk::texts(), &error)) return 0;
    err << "picsheet: " << error << Qt::endl;
    return 1;
}

// The window: a folder to choose, its pictures loaded off the GUI thread.
class PictureSheet : public QObject {
public:
    explicit PictureSheet(const QString& folder) : window_(QStringLiteral("Pictures catalogue"))
    {
        folder_ = new QLineEdit(QDir::toNativeSeparators(folder), &window_);
        folder_->setObjectName("folder");
        auto* browse = new QPushButton(QObject::tr("&Browse..."), &window_);
        auto* label = new QLabel(QObject::tr("&Folder:"), &window_);
        label->setBuddy(folder_);
        auto* row = new QHBoxLayout;
        row->addWidget(label);
        row->addWidget(folder_, 1);
        row->addWidget(browse);
        window_.addTopRow(row);
        QObject::connect(folder_, &QLineEdit::returnPressed, this, [this] { load(folder_->text()); });
        QObject::connect(browse, &QPushButton::clicked, this, [this] {
            const QString chosen = QFileDialog::getExistingDirectory(&window_, QString(), folder_->text());
            if (chosen.isEmpty()) return;
            folder_->setText(QDir::toNativeSeparators(chosen));
            load(chosen);
        });
        window_.resize(560, 240);
        window_.show();
        load(folder);
    }

private:
    void load(const QString& folder)
    {
        const Folder f = readFolder(folder);
        const quint64 generation = ++generation_;
        if (!f.problem.isEmpty()) {
            window_.clearCatalogue(f.problem);
            return;
        }
        const QString absolute = QDir(folder).absolutePath();
        window_.showProgress(absolute, 0, int(f.paths.size()));
        const QPointer<PictureSheet> self(this);
        auto* watcher = new QFutureWatcher<cat::PictureSet>(this);
        QObject::connect(watcher, &QFutureWatcher<cat::PictureSet>::finished, this, [=, this] {
            watcher->deleteLater();
            // A folder chosen meanwhile wins.
            if (generation != generation_) return;
            cat::PictureSet set = watcher->result();
            const QStringList notes = skippedNotes(set);
            if (set.pictures.empty()) {
                window_.clearCatalogue(jk::texts().msg(jk::Msg::CatalogueNoPictures) + u' ' + absolute + u'\n' +
                                       notes.join(u'\n'));
                return;
            }
            window_.setCatalogue(std::make_shared<cat::PictureCatalogue>(absolute, std::move(set), jk::texts()), notes);
        });
        watcher->setFuture(QtConcurrent::run([paths = f.paths, self, absolute, generation] {
            return cat::loadPictures(paths, [self, absolute, generation](int done, int total) {
                QMetaObject::invokeMethod(qApp, [self, absolute, generation, done, total] {
                    if (self && generation == self->generation_) self->window_.showProgress(absolute, done, total);
                });
            });
        }));
    }

    cat::CatalogueWindow window_;
    QLineEdit* folder_;
    quint64 generation_ = 0;
};

}  // namespace

int main(int argc, char* argv[])
{
    if (jk::companion::headlessRequested(argc, argv) && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("picsheet"));
    QApplication::setApplicationVersion(QStringLiteral("4.0"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Prints a contact sheet of the pictures of a folder."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("folder"),
                                 QStringLiteral("The folder (default: the pictures folder of the preferences)."),
                                 QStringLiteral("[FOLDER]"));
    const QCommandLineOption pdf(QStringLiteral("pdf"),
                                 QStringLiteral("Write the contact sheet of FOLDER into OUT.pdf without any window "
                                                "and exit; pictures that cannot be read are left out with a message; "
                                                "exit status 1 when nothing can be written."),
                                 QStringLiteral("OUT.pdf"));
    parser.addOption(pdf);
    parser.process(app);

    jk::companion::loadProgramState();
    const QStringList args = parser.positionalArguments();
    if (args.size() > 1) {
        QTextStream(stderr) << "picsheet: one folder at a time" << Qt::endl;
        return 1;
    }
    if (parser.isSet(pdf)) {
        if (args.isEmpty()) {
            QTextStream(stderr) << "picsheet: --pdf OUT.pdf needs a FOLDER" << Qt::endl;
            return 1;
        }
        return writePdf(parser.value(pdf), args.first());
    }

    installRealServices();
    PictureSheet sheet(args.isEmpty() ? jk::companion::picturesFolder() : args.first());
    return app.exec();
}
