// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWSnapshotSound.h"

#include <cmath>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray sound()
{
    QFile file(QStringLiteral(BW_SOUND));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestBWSnapshotSound : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void samples()
    {
        const auto [bytes, format, error] = BWSnapshotSound::decode(sound());
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QVERIFY(format.isValid());
        const double milliseconds = 1000.0 * format.framesForBytes(int(bytes.size())) / format.sampleRate();
        QVERIFY2(std::abs(milliseconds - 150) < 3, qPrintable(QString::number(milliseconds)));
        float loudest = 0;
        for (int i = 0; i < format.framesForBytes(int(bytes.size())); ++i)
            loudest =
                std::max(loudest, std::abs(format.normalizedSampleValue(bytes.constData() + format.bytesForFrames(i))));
        QVERIFY2(loudest > 0.1 && loudest < 0.5, qPrintable(QString::number(loudest)));
    }

    /// The server accepts connections and never answers. One thread keeps waiting for it, so the end of this program is
    /// part of the test.
    void silentServerBlocksNothing()
    {
        // They outlive main().
        static const QTemporaryDir home;
        static auto &server = *new QLocalServer;
        QVERIFY(server.listen(home.filePath(u"native"_s)));
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
        qputenv("PULSE_SERVER", "unix:" + server.fullServerName().toUtf8());

        QElapsedTimer timer;
        {
            BWSnapshotSound shutter(sound());
            shutter.prepare();
            QTRY_VERIFY(server.hasPendingConnections());
            timer.start();
            for (int i = 0; i < 100; ++i)
                shutter.play();
            QVERIFY(timer.elapsed() < 100);
        }
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestBWSnapshotSound)
#include "tst_BWSnapshotSound.moc"
