#include "app/SplashWindow.h"
#include "file/FontCache.h"
#include "model/AppContext.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>

SplashWindow::SplashWindow(QWidget* parent) : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
{
    setObjectName("Form2");
    setFixedSize(460, 260);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setStyleSheet("Form2 { background: qlineargradient(x1:0, y1:0, x2:1, y2:1, stop:0 #1d3557, stop:1 #457b9d); }"
                  "QLabel { color: white; }");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 18);
    auto* icon = new QLabel(this);
    icon->setPixmap(QIcon(":/icons/jewlkit.svg").pixmap(72, 72));
    icon->setAlignment(Qt::AlignCenter);
    auto* name = new QLabel(QStringLiteral("Jewelcase Studio"), this);
    name->setObjectName("Title");
    QFont f = name->font();
    f.setPointSize(20);
    f.setBold(true);
    name->setFont(f);
    name->setAlignment(Qt::AlignCenter);
    loadFont_ = new QLabel(this);
    loadFont_->setObjectName("LoadFont");
    loadFont_->setAlignment(Qt::AlignCenter);
    list1_ = new QListWidget(this);
    list1_->setObjectName("List1");
    list1_->hide();
    layout->addWidget(icon);
    layout->addWidget(name);
    layout->addStretch();
    layout->addWidget(loadFont_);
}

QString SplashWindow::status() const { return loadFont_->text(); }

void SplashWindow::setStatus(const QString& text)
{
    loadFont_->setText(text);
    loadFont_->repaint();
}

QStringList SplashWindow::printerFonts() { return QFontDatabase::families(); }

bool SplashWindow::loadTexts()
{
    jk::AppContext& app = jk::appSetup();
    if (QScreen* s = QGuiApplication::primaryScreen()) move(s->availableGeometry().center() - rect().center());
    app.files.discDatabasePath = jk::paths::discDatabaseFile();

    app.texts = jk::loadMessageFile(jk::paths::messageFile());
    const jk::Texts& t = app.texts;
    setStatus(t.splash[0]);

    setStatus(t.splash[1]);
    const QStringList fonts = printerFonts();
    const int last = int(fonts.size()) - 1;
    bool rebuilt = false;
    if (!jk::fontCacheIsCurrent(app.files.fontListPath, int(fonts.size()))) {
        list1_->clear();
        list1_->addItems(fonts);
        jk::paths::ensureDir(jk::paths::cacheDir());
        const QString progress = t.splash[2] + u' ';
        jk::writeFontCache(app.files.fontListPath, fonts, [&](int i) {
            // Repainting every name would cost more than the rebuild itself.
            if (i % 16 == 0 || i == last)
                setStatus(progress + QString::number(i) + u'/' + QString::number(last));
        });
        rebuilt = true;
    }
    setStatus(QString::number(fonts.size()) + u' ' + t.splash[3]);
    return rebuilt;
}
