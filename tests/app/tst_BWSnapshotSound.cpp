#include "../Rows.h"
#include "App/Capture/BWSnapshotSound.h"
#include "App/Capture/BWSoundDecoder.h"

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

    void samples_data()
    {
        const Rows<QAudioFormat::SampleFormat, int, int> row;
        row("usual", QAudioFormat::Int16, 48000, 2);
        row("fine", QAudioFormat::Float, 96000, 2);
        row("plain", QAudioFormat::UInt8, 8000, 1);
        row("surround", QAudioFormat::Int32, 48000, 6);
    }
    void samples()
    {
        const auto [sampleFormat, rate, channels] = Rows<QAudioFormat::SampleFormat, int, int>::current();
        QAudioFormat format;
        format.setSampleFormat(sampleFormat);
        format.setSampleRate(rate);
        format.setChannelCount(channels);
        QString error;
        const QByteArray samples = BWSoundDecoder::decode(sound(), format, &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        const double milliseconds = 1000.0 * format.framesForBytes(static_cast<qint32>(samples.size())) / rate;
        QVERIFY2(std::abs(milliseconds - 150) < 3, qPrintable(QString::number(milliseconds)));
        const auto peak = [&](double from, double to) { // milliseconds
            float highest = 0;
            const qsizetype first = qsizetype(from * rate / 1000) * channels;
            for (qsizetype i = first; i < qsizetype(to * rate / 1000) * channels; ++i) {
                const char *sample = samples.constData() + i * format.bytesPerSample();
                highest = std::max(highest, std::abs(format.normalizedSampleValue(sample)));
            }
            return highest;
        };
        QVERIFY(peak(0, 10) > 0.08); // begins at once
        QVERIFY(peak(40, 60) < 0.05);
        QVERIFY(peak(65, 85) > 0.1);
        QVERIFY(peak(0, 145) < 0.5);
    }

    void noSound()
    {
        QAudioFormat format;
        format.setSampleFormat(QAudioFormat::Int16);
        format.setSampleRate(44100);
        format.setChannelCount(1);
        for (const QByteArray &file : {QByteArray(), QByteArray(5000, 'x'), sound().left(100)}) {
            QString error;
            QVERIFY(BWSoundDecoder::decode(file, format, &error).isEmpty());
            QVERIFY(!error.isEmpty());
        }
        QVERIFY(BWSoundDecoder::decode(sound(), QAudioFormat()).isEmpty());
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
            QTest::qWait(30);
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
