// The capture program: the desktop portal's answers (from a stand-in portal
// on a private session bus), and saving: the name it proposes, a folder it
// cannot write, the report the main program reads.
#include "Fixture.h"
#include "companions/ScreenGrab.h"
#include "companions/SnapTool.h"
#include "platform/FakeServices.h"
#include <QComboBox>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

namespace snap = jk::snap;

// The desktop's screenshot portal as a test wants it to answer.
class StandInPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Screenshot")
public:
    explicit StandInPortal(const QDBusConnection& bus) : bus_(bus) {}
    uint response = 0;  // kRefuse: the call itself fails
    QString uri;
    QVariantMap options;
    static constexpr uint kRefuse = 99;

public Q_SLOTS:
    QDBusObjectPath Screenshot(const QString&, const QVariantMap& opts, const QDBusMessage& call)
    {
        options = opts;
        if (response == kRefuse) {
            call.setDelayedReply(true);
            bus_.send(call.createErrorReply(QDBusError::NotSupported, QStringLiteral("no screenshots here")));
            return {};
        }
        QString sender = call.service().mid(1);
        sender.replace(u'.', u'_');
        const QString path = "/org/freedesktop/portal/desktop/request/" + sender + u'/' + opts["handle_token"].toString();
        // The answer follows the call, as a signal on the request's path.
        QTimer::singleShot(0, this, [this, path] {
            QDBusMessage answer = QDBusMessage::createSignal(path, "org.freedesktop.portal.Request", "Response");
            answer << response << QVariantMap{{"uri", uri}};
            bus_.send(answer);
        });
        return QDBusObjectPath(path);
    }

private:
    QDBusConnection bus_;
};

class TestSnapTool : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    QProcess daemon;
    std::unique_ptr<StandInPortal> portal;

private Q_SLOTS:
    void cleanupTestCase()
    {
        daemon.kill();
        daemon.waitForFinished();
    }

    void portalAnswers_data()
    {
        QTest::addColumn<uint>("response");
        QTest::addColumn<QString>("uri");
        QTest::addColumn<QString>("expect");
        const QString shot = QUrl::fromLocalFile(tmp.filePath("shot.png")).toString();
        QTest::newRow("picture") << 0u << shot << "taken";
        QTest::newRow("cancelled") << 1u << QString() << "cancelled";
        QTest::newRow("refused") << 2u << QString() << "failed";
        QTest::newRow("picture gone") << 0u << QUrl::fromLocalFile(tmp.filePath("gone.png")).toString() << "failed";
        QTest::newRow("no screenshot service") << StandInPortal::kRefuse << shot << "failed";
    }
    void portalAnswers()
    {
        QFETCH(uint, response);
        QFETCH(QString, uri);
        QFETCH(QString, expect);
        if (!portal) {
            if (QStandardPaths::findExecutable("dbus-daemon").isEmpty()) QSKIP("dbus-daemon is not installed");
            daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
            QVERIFY(daemon.waitForReadyRead(10000));
            const QString address = QString::fromUtf8(daemon.readLine()).trimmed();
            QDBusConnection service = QDBusConnection::connectToBus(address, "service");
            QDBusConnection::connectToBus(address, "client");
            portal = std::make_unique<StandInPortal>(service);
            QVERIFY(service.registerService("org.freedesktop.portal.Desktop"));
            QVERIFY(service.registerObject("/org/freedesktop/portal/desktop", portal.get(),
                                           QDBusConnection::ExportAllSlots));
            QImage shot(64, 48, QImage::Format_RGB32);
            shot.fill(Qt::red);
            QVERIFY(shot.save(tmp.filePath("shot.png")));
        }
        const QDBusConnection client("client");
        QVERIFY(snap::PortalScreenshot::available(client));
        portal->response = response;
        portal->uri = uri;

        snap::PortalScreenshot request(client);
        QSignalSpy taken(&request, &snap::PortalScreenshot::taken), cancelled(&request, &snap::PortalScreenshot::cancelled),
            failed(&request, &snap::PortalScreenshot::failed);
        request.request(true);
        QTRY_VERIFY_WITH_TIMEOUT(taken.size() + cancelled.size() + failed.size() == 1, 10000);
        QCOMPARE(portal->options.value("interactive").toBool(), true);
        QCOMPARE(expect == "taken" ? taken.size() : expect == "cancelled" ? cancelled.size() : failed.size(), 1);
        if (!taken.isEmpty()) QCOMPARE(taken.first().first().value<QImage>().size(), QSize(64, 48));
        if (response == StandInPortal::kRefuse) QVERIFY(failed.first().first().toString().contains("no screenshots here"));
    }

    void savingProposesANameAndKeepsNothingHalfWritten()
    {
        fixture::resetApp();
        FakeServices fake;
        fake.install();
        QDir folder(tmp.filePath("pictures"));
        QVERIFY(folder.mkpath("."));
        const QDateTime when(QDate(2024, 3, 1), QTime(10, 0, 5));
        QCOMPARE(snap::proposedName(folder.path(), when, "jpg"), QString("capture-20240301-100005.jpg"));
        QVERIFY(fixture::writeFile(folder.filePath("capture-20240301-100005.jpg"), "taken"));
        QVERIFY(fixture::writeFile(folder.filePath("capture-20240301-100005-2.jpg"), "taken too"));
        QCOMPARE(snap::proposedName(folder.path(), when, "jpg"), QString("capture-20240301-100005-3.jpg"));

        // A folder nobody may write into (root writes anywhere but /proc).
        QDir locked(tmp.filePath("locked"));
        QVERIFY(locked.mkpath("."));
        QFile::setPermissions(locked.path(), QFile::ReadOwner | QFile::ExeOwner);
        if (QFileInfo(locked.path()).isWritable()) locked.setPath("/proc");

        const QString report = tmp.filePath("report.txt");
        snap::SnapWindow w(report);
        w.show();
        QImage picture(80, 60, QImage::Format_ARGB32);
        picture.fill(QColor(0, 0, 255, 128));
        w.setPicture(picture);
        auto* name = w.findChild<QLineEdit*>("name");
        auto* folderBox = w.findChild<QLineEdit*>("folder");
        QVERIFY(name->text().startsWith("capture-") && name->text().endsWith(".jpg"));
        folderBox->setText(locked.path());
        name->setText("cover");
        QVERIFY(!w.save());
        QCOMPARE(fake.messages.calls.size(), 1);
        QVERIFY(fake.messages.calls.last().text.startsWith(QString::fromUtf8(jk::builtInMessage(jk::Msg::CaptureNotSaved))));
        QVERIFY(w.isVisible() && !QFile::exists(locked.filePath("cover.jpg")));
        QVERIFY(QDir(locked.path()).entryList({"cover*"}, QDir::Files | QDir::Hidden).isEmpty());

        // An existing file is kept when the user says No, replaced on Yes.
        folderBox->setText(folder.path());
        w.findChild<QComboBox*>("format")->setCurrentIndex(1);  // PNG: the name follows
        QCOMPARE(name->text(), QString("cover.png"));
        QVERIFY(fixture::writeFile(folder.filePath("cover.png"), "older"));
        fake.messages.answers = {jk::platform::AnswerNo};
        QVERIFY(!w.save());
        QCOMPARE(fixture::readFile(folder.filePath("cover.png")), QByteArray("older"));
        fake.messages.answers = {jk::platform::AnswerYes};
        QVERIFY(w.save());
        QVERIFY(!w.isVisible());
        const QImage saved(folder.filePath("cover.png"));
        QCOMPARE(saved.size(), QSize(80, 60));
        QCOMPARE(saved.pixelColor(1, 1).alpha(), 128);
        QCOMPARE(fixture::readFile(report), folder.filePath("cover.png").toUtf8() + '\n');
        QFile::setPermissions(tmp.filePath("locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};

QTEST_MAIN(TestSnapTool)
#include "test_snaptool.moc"
