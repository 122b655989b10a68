#include "App/Capture/BWSnapshotSound.h"

#include <atomic>
#include <cmath>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

std::atomic<int> lines; // that came into the log

void count(QtMsgType, const QMessageLogContext &, const QString &)
{
    ++lines;
}

QByteArray sound()
{
    QFile file(QStringLiteral(BW_SOUND));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestBWSnapshotSound : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The sound server's library looks, and leaves things, in the home folder.
        qputenv("HOME", m_home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", m_home.path().toUtf8());
        qputenv("PULSE_SERVER", "unix:/nowhere/native");
    }

    void samples()
    {
        const auto [bytes, format, error] = BWSnapshotSound::decode(sound());
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QVERIFY(format.isValid());
        const double milliseconds = 1000.0 * format.framesForBytes(int(bytes.size())) / format.sampleRate();
        QVERIFY2(std::abs(milliseconds - 150) < 3, qPrintable(QString::number(milliseconds)));
        const auto peak = [&, &samples = bytes, &in = format](double from, double to) { // milliseconds
            float highest = 0;
            for (int i = in.framesForDuration(qint64(from * 1000)); i < in.framesForDuration(qint64(to * 1000)); ++i)
                highest =
                    std::max(highest, std::abs(in.normalizedSampleValue(samples.constData() + in.bytesForFrames(i))));
            return highest;
        };
        QVERIFY(peak(0, 10) > 0.08); // begins at once
        QVERIFY(peak(40, 60) < 0.05);
        QVERIFY(peak(65, 85) > 0.1);
        QVERIFY(peak(0, 145) < 0.5);
        for (const QByteArray &file : {QByteArray(), QByteArray(5000, 'x'), sound().left(100)}) {
            const BWSnapshotSound::Samples none = BWSnapshotSound::decode(file);
            QVERIFY(none.bytes.isEmpty() && !none.error.isEmpty());
        }
    }

    void withoutServer()
    {
        const QtMessageHandler before = qInstallMessageHandler(&count);
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 3; ++i) {
            BWSnapshotSound shutter(sound());
            shutter.play();
            shutter.play();
        }
        qInstallMessageHandler(before);
        QVERIFY(timer.elapsed() < 2000);
        QVERIFY2(lines <= 1, qPrintable(QString::number(lines)));
    }

private:
    const QTemporaryDir m_home;
};

QTEST_GUILESS_MAIN(TestBWSnapshotSound)
#include "tst_BWSnapshotSound.moc"
