#include "dual_deck_fixture.h"

#include "support/glib_criticals.h"
#include "support/private_pulse_audio.h"

using namespace tarnix;
using namespace tarnix::test;

// The program output's device change against a PulseAudio server of the
// test's own: held while a deck is ON AIR, applied by the first poll after
// OFF AIR.
class TestDualDeckAudioDevice : public QObject
{
    Q_OBJECT

    PrivatePulseAudio m_pulse;

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));
    }

    void cleanupTestCase() { m_pulse.stop(); }

    void deviceChangeWaitsForOffAir()
    {
        PlayerFixture f;
        f.options.audioDevice = QStringLiteral("onair");
        f.options.audioSinkFactory = ProgramAudioOutput::defaultSinkFactory();
        QVERIFY(f.start());
        ProgramAudioOutput *audio = f.player->audioOutput();
        QVERIFY(f.pollUntil([&] { return audio->isRunning() && !audio->isDeviceChangeRunning(); },
                            10000));
        QCOMPARE(audio->activeDevice(), QStringLiteral("onair"));

        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QVERIFY(f.player->play());
        audio->setRequestedDevice(QStringLiteral("other"));
        for (int tick = 0; tick < 5; ++tick)
            f.player->poll();
        QCOMPARE(ProgramAudioOutput::statusText(audio->statusKey()),
                 QStringLiteral("Waiting until ON AIR and BGM are stopped."));
        QVERIFY(!audio->isDeviceChangeRunning());
        QCOMPARE(audio->activeDevice(), QStringLiteral("onair"));

        QCOMPARE(f.player->offAir(), 2);
        f.player->poll();
        QVERIFY(audio->isDeviceChangeRunning()
                || audio->activeDevice() == QStringLiteral("other"));
        QVERIFY(f.pollUntil([&] { return !audio->isDeviceChangeRunning(); }, 10000));
        QCOMPARE(audio->activeDevice(), QStringLiteral("other"));
        QCOMPARE(ProgramAudioOutput::statusText(audio->statusKey()),
                 QStringLiteral("ON AIR output device applied."));
    }
};

QTEST_MAIN(TestDualDeckAudioDevice)
#include "tst_dual_deck_audio_device.moc"
