#include "dual_deck_fixture.h"

#include "shell/pipeline_release.h"
#include "support/glib_criticals.h"
#include "support/refusing_element.h"

#include <QElapsedTimer>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// Sequence of the first frame after `since` that matches, or 0; sets
// `between` when a frame that is neither old nor new comes before it.
template <typename IsNew, typename IsOld>
quint64 firstFrame(const FrameTap &log, quint64 since, IsNew isNew, IsOld isOld, bool *between)
{
    *between = false;
    for (const TapPixel &pixel : log.since(since)) {
        if (isNew(pixel))
            return pixel.sequence;
        if (!isOld(pixel))
            *between = true;
    }
    return 0;
}

bool near(int value, double expected)
{
    return std::abs(value - expected) <= 2.0;
}

} // namespace

class TestDualDeckPlayer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    // Cuts alternate the decks: the program shows the new clip within two
    // output frames with nothing between, and the replaced deck's pipeline
    // is freed. The first cut comes from the background.
    void cutsAlternateDecks()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        QCOMPARE(f.player->currentDeck(), -1);
        QVERIFY(isBlack(f.frames->last()));

        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QCOMPARE(f.player->standbyDeck(), 0);
        int status = -1;
        quint64 before = f.frames->last().sequence;
        QVERIFY(f.player->takeStandby(false, 1.0f, &status));
        QCOMPARE(status, 0);
        QCOMPARE(f.player->currentDeck(), 0);
        QCOMPARE(f.player->standbyDeck(), -1);
        QVERIFY(f.player->play());
        bool between = false;
        QTRY_VERIFY_WITH_TIMEOUT(firstFrame(*f.frames, before, isRed, isBlack, &between), 2000);
        QVERIFY(firstFrame(*f.frames, before, isRed, isBlack, &between) <= before + 2);

        QCOMPARE(f.cue(fileSource(media("solid-blue-4s.mp4"))), PreparationStatus::Ready);
        QCOMPARE(f.player->standbyDeck(), 1);
        auto redFreed = watchFinalization(f.player->deck(0)->playbin());
        before = f.frames->last().sequence;
        QVERIFY(f.player->takeStandby(false, 1.0f, &status));
        QCOMPARE(f.player->currentDeck(), 1);
        QVERIFY(!f.player->isCrossfadeActive());
        QTRY_VERIFY_WITH_TIMEOUT(firstFrame(*f.frames, before, isBlue, isRed, &between), 2000);
        QVERIFY2(firstFrame(*f.frames, before, isBlue, isRed, &between) <= before + 2,
                 "the cut took more than two output frames");
        QVERIFY2(!between, "a frame other than the old or new clip was shown at the cut");
        QTRY_VERIFY_WITH_TIMEOUT(redFreed->load(), 5000);

        // The next standby is deck 0 again, prepared on its fresh pipeline.
        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QCOMPARE(f.player->standbyDeck(), 0);
    }

    // A crossfade mixes the new deck under the old one and ends by freeing
    // the old deck; with an audio-only deck it is a cut.
    void crossfadeMixesAndEnds()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QTRY_VERIFY_WITH_TIMEOUT(isRed(f.frames->last()), 2000);
        const TapPixel red = f.frames->last();

        QCOMPARE(f.cue(fileSource(media("solid-blue-4s.mp4"))), PreparationStatus::Ready);
        auto redFreed = watchFinalization(f.player->deck(0)->playbin());
        QVERIFY(f.player->takeStandby(true, 1.0f));
        QVERIFY(f.player->isCrossfadeActive());
        QCOMPARE(f.player->crossfadeFromDeck(), 0);
        QCOMPARE(f.player->crossfadeToDeck(), 1);
        // At the start of the fade the old clip is still all there is.
        quint64 before = f.frames->last().sequence;
        QTRY_VERIFY_WITH_TIMEOUT(!f.frames->since(before + 1).empty(), 2000);
        QVERIFY(isRed(f.frames->last()));
        const TapPixel blue = [&] {
            // The standby's prerolled frame, as the compositor has it.
            GstSample *sample = f.player->compositor()->latestSample(1);
            TapPixel pixel;
            if (sample) {
                GstBuffer *buffer = gst_sample_get_buffer(sample);
                GstMapInfo map;
                if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                    const quint8 *p = map.data + (90 * 320 + 160) * 4; // RGBA
                    pixel = {0, p[0], p[1], p[2]};
                    gst_buffer_unmap(buffer, &map);
                }
                gst_sample_unref(sample);
            }
            return pixel;
        }();
        QVERIFY(isBlue(blue));

        QVERIFY(f.player->stopCrossfade(0.25f));
        QVERIFY(f.player->isCrossfadeActive());
        before = f.frames->last().sequence;
        QTRY_VERIFY_WITH_TIMEOUT(f.frames->since(before + 1).size() >= 2, 2000);
        const TapPixel mixed = f.frames->last();
        QVERIFY2(near(mixed.r, 0.25 * blue.r + 0.75 * red.r) && near(mixed.g, 0.25 * blue.g + 0.75 * red.g)
                     && near(mixed.b, 0.25 * blue.b + 0.75 * red.b),
                 qPrintable(QStringLiteral("%1,%2,%3 from red %4,%5,%6 and blue %7,%8,%9")
                                .arg(mixed.r).arg(mixed.g).arg(mixed.b)
                                .arg(red.r).arg(red.g).arg(red.b)
                                .arg(blue.r).arg(blue.g).arg(blue.b)));
        QVERIFY(!redFreed->load());

        QVERIFY(f.player->stopCrossfade(1.0f));
        QVERIFY(!f.player->isCrossfadeActive());
        QCOMPARE(f.player->currentDeck(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(redFreed->load(), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(isBlue(f.frames->last()), 2000);

        // Audio only on the standby: the take is a cut and the old deck goes.
        QCOMPARE(f.cue(fileSource(media("aac-audio-only.m4a"))), PreparationStatus::Ready);
        auto blueFreed = watchFinalization(f.player->deck(1)->playbin());
        QVERIFY(f.player->takeStandby(true, 1.0f));
        QVERIFY(!f.player->isCrossfadeActive());
        QCOMPARE(f.player->currentDeck(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(blueFreed->load(), 5000);
        QVERIFY(!f.player->stopCrossfade(1.0f));
    }

    // Events reach takeEvent only from the current deck: an end of stream
    // waiting on the old deck's bus at the take, or one the old deck posts
    // during a crossfade, is dropped.
    void eventsOnlyFromTheCurrentDeck()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));

        // The current deck's end of stream is an event.
        GstElement *red = f.player->deck(0)->playbin();
        gst_bus_post(f.player->deck(0)->bus(), gst_message_new_eos(GST_OBJECT(red)));
        f.player->poll();
        QCOMPARE(f.player->takeEvent(), int(DualDeckPlayer::EndOfStream));
        QCOMPARE(f.player->takeEvent(), int(DualDeckPlayer::NoEvent));

        // One still unread on the bus when the next deck is taken.
        QCOMPARE(f.cue(fileSource(media("solid-blue-4s.mp4"))), PreparationStatus::Ready);
        gst_bus_post(f.player->deck(0)->bus(), gst_message_new_eos(GST_OBJECT(red)));
        QVERIFY(f.player->takeStandby(true, 1.0f));
        f.player->poll();
        QCOMPARE(f.player->takeEvent(), int(DualDeckPlayer::NoEvent));

        // One the fading-out deck posts after the take.
        gst_bus_post(f.player->deck(0)->bus(), gst_message_new_eos(GST_OBJECT(red)));
        f.player->poll();
        QCOMPARE(f.player->takeEvent(), int(DualDeckPlayer::NoEvent));
        QVERIFY(f.player->stopCrossfade(1.0f));
        f.player->poll();
        QCOMPARE(f.player->takeEvent(), int(DualDeckPlayer::NoEvent));

        // Errors: of the current deck, and of the program audio pipeline,
        // which an end of stream of the deck does not overwrite.
        GstElement *blue = f.player->deck(1)->playbin();
        auto postError = [](GstElement *source, const char *text) {
            GError *error = g_error_new_literal(GST_STREAM_ERROR, GST_STREAM_ERROR_DECODE, text);
            gst_element_post_message(source, gst_message_new_error(GST_OBJECT(source), error, nullptr));
            g_error_free(error);
        };
        postError(blue, "decoder broke");
        f.player->poll();
        QString text;
        bool programAudio = true;
        QCOMPARE(f.player->takeEvent(&text, &programAudio), int(DualDeckPlayer::Error));
        QCOMPARE(text, QStringLiteral("decoder broke"));
        QVERIFY(!programAudio);

        postError(f.player->audioOutput()->pipeline(), "device gone");
        f.player->poll();
        gst_bus_post(f.player->deck(1)->bus(), gst_message_new_eos(GST_OBJECT(blue)));
        f.player->poll();
        QCOMPARE(f.player->takeEvent(&text, &programAudio), int(DualDeckPlayer::Error));
        QCOMPARE(text, QStringLiteral("device gone"));
        QVERIFY(programAudio);
    }

    // A failed standby leaves the program alone; OFF AIR completes even when
    // a deck's pipeline refuses NULL, and that deck keeps the retained
    // pipeline, so a later replacement on it is refused.
    void failuresStayOffTheProgram()
    {
        PlayerFixture f;
        f.options.deckTimings.maxUnconfirmedStops = 0;
        QVERIFY(f.start());
        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QVERIFY(f.player->play());
        QTRY_VERIFY_WITH_TIMEOUT(isRed(f.frames->last()), 2000);

        QCOMPARE(f.cue(fileSource(media("no-such-file.mp4"))), PreparationStatus::Failed);
        QVERIFY(!f.player->standbyError().isEmpty());
        QVERIFY(f.player->deck(1)->mediaOffline());
        int status = -1;
        QVERIFY(!f.player->takeStandby(false, 1.0f, &status));
        QCOMPARE(status, 3);
        QCOMPARE(f.player->currentDeck(), 0);
        quint64 before = f.frames->last().sequence;
        QTRY_VERIFY_WITH_TIMEOUT(f.frames->since(before).size() >= 3, 2000);
        for (const TapPixel &pixel : f.frames->since(before))
            QVERIFY(isRed(pixel));
        QVERIFY(f.player->releaseStandby());
        QCOMPARE(f.player->standbyDeck(), -1);

        GstElement *refusing = makeNullRefusingElement();
        GstElement *playbin = f.player->deck(0)->playbin();
        QVERIFY(gst_bin_add(GST_BIN(playbin), refusing));
        gst_element_sync_state_with_parent(refusing);
        auto freed = watchFinalization(playbin);
        QCOMPARE(f.player->offAir(), 2);
        QCOMPARE(f.player->currentDeck(), -1);
        QVERIFY(f.player->isHoldAtStart());
        QTRY_VERIFY_WITH_TIMEOUT(isBlack(f.frames->last()), 2000);
        QTRY_COMPARE_WITH_TIMEOUT(f.player->deck(0)->unconfirmedStopCount(), 1, 5000);
        QVERIFY(!freed->load());

        // The fresh pipeline prepares; replacing it is refused while the
        // retained one counts against the deck.
        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QCOMPARE(f.player->standbyDeck(), 0);
        QVERIFY(!f.player->prepareStandby(fileSource(media("solid-blue-4s.mp4"))));
        QCOMPARE(f.player->standbyStatus(), PreparationStatus::Failed);
        QCOMPARE(f.player->standbyError(),
                 QStringLiteral("Could not stop the previous input on the standby player."));
    }

    // Transport of the current deck: seeks stay inside In and Out, rate 2
    // runs twice as fast, and a frozen start restores.
    void transportOfTheCurrentDeck()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"), 500, 3500)), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QVERIFY(std::abs(f.player->positionMs() - 500) < 60);

        QVERIFY(f.player->seek(0));
        QVERIFY(f.pollUntil([&] { return std::abs(f.player->positionMs() - 500) < 60; }));
        QVERIFY(f.player->seek(9000));
        QVERIFY(f.pollUntil([&] {
            const qint64 position = f.player->positionMs();
            return position > 3400 && position <= 3500;
        }));

        QVERIFY(f.player->seek(600));
        QVERIFY(f.pollUntil([&] { return std::abs(f.player->positionMs() - 600) < 60; }));
        QVERIFY(f.player->setRate(2.0));
        QVERIFY(f.player->play());
        QVERIFY(f.pollUntil([&] { return f.player->isPlaying(); }));
        QVERIFY(f.pollUntil([&] { return f.player->positionMs() > 700; }));
        const qint64 startPosition = f.player->positionMs();
        QElapsedTimer wall;
        wall.start();
        QVERIFY(f.pollUntil([&] { return f.player->positionMs() >= startPosition + 1200; }));
        const double ratio = double(f.player->positionMs() - startPosition) / double(wall.elapsed());
        QVERIFY2(ratio > 1.7 && ratio < 2.3, qPrintable(QString::number(ratio)));

        QVERIFY(f.player->stop());
        QVERIFY(f.player->isHoldAtStart());
        QCOMPARE(f.player->positionMs(), 500);

        QVERIFY(f.player->freezeAtStart());
        QVERIFY(f.player->isStillFrozen());
        QCOMPARE(f.player->restoreStill(), 1);
        int result = 1;
        QElapsedTimer restore;
        restore.start();
        QVERIFY(f.pollUntil([&] { return (result = f.player->restoreStill()) != 1; }, 3000));
        QVERIFY(restore.elapsed() < 2500);
        QVERIFY(result == 0 || result == 2);
        if (result == 0)
            QVERIFY(!f.player->isStillFrozen());
    }

    // Shutdown confirms every pipeline; with one that refuses NULL it stays
    // unconfirmed and the player keeps its engine.
    void shutdownConfirms_data()
    {
        QTest::addColumn<bool>("stuck");
        QTest::newRow("normal") << false;
        QTest::newRow("stuck pipeline") << true;
    }
    void shutdownConfirms()
    {
        QFETCH(bool, stuck);
        PlayerFixture f;
        QVERIFY(f.start());
        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QVERIFY(f.player->play());
        const std::size_t retainedBefore = retainedCount();
        if (stuck) {
            GstElement *refusing = makeNullRefusingElement();
            QVERIFY(gst_bin_add(GST_BIN(f.player->deck(0)->playbin()), refusing));
            gst_element_sync_state_with_parent(refusing);
        }
        QElapsedTimer clock;
        clock.start();
        f.player->beginShutdown();
        QVERIFY(!f.player->isInitialized());
        QVERIFY(!f.player->prepareStandby(fileSource(media("solid-blue-4s.mp4"))));
        if (!stuck) {
            QTRY_VERIFY_WITH_TIMEOUT(f.player->isShutdownConfirmed(), 3000);
            QVERIFY(clock.elapsed() < 3000);
            f.player.reset();
            QCOMPARE(retainedCount(), retainedBefore);
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(f.player->isShutdownFinished(), 5000);
        QVERIFY(!f.player->isShutdownConfirmed());
        f.player.reset();
        QCOMPARE(retainedCount(), retainedBefore + 1);
    }
};

QTEST_MAIN(TestDualDeckPlayer)
#include "tst_dual_deck_player.moc"
