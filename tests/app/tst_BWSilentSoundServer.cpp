#include "App/Capture/BWSnapshotSound.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// A sound server that takes connections and says nothing. In a program of its own, because its end is part of the
/// test: a thread is left that still waits for the server.
class TestBWSilentSoundServer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nobodyWaits()
    {
        // To the very end of the program.
        static const QTemporaryDir home;
        static auto &server = *new QLocalServer;
        QVERIFY(server.listen(home.filePath(u"native"_s)));
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
        qputenv("PULSE_SERVER", "unix:" + server.fullServerName().toUtf8());
        QFile file(QStringLiteral(BW_SOUND));
        QVERIFY(file.open(QIODevice::ReadOnly));

        QElapsedTimer timer;
        {
            BWSnapshotSound shutter(file.readAll());
            QTRY_VERIFY(server.hasPendingConnections());
            timer.start();
            for (int i = 0; i < 100; ++i)
                shutter.play();
            QVERIFY(timer.elapsed() < 100);
        }
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestBWSilentSoundServer)
#include "tst_BWSilentSoundServer.moc"
