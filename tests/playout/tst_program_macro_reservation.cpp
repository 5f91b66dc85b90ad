// The macro's hold on the standby deck: every accepted request and every
// reservation is answered exactly once, whatever ends it.

#include "program_playout_rig.h"

#include <QSignalSpy>
#include <QTest>

using namespace tarnix;
using namespace tarnix::test;

namespace {

enum class Ending { ManualTake, OffAir, OperatorSelection, SettingsChanged, ItemRemoved, Automatic, Replaced };

struct MacroRig : ProgramPlayoutRig {
    quint64 a = add(QStringLiteral("/media/a.mp4"), playing(PlaylistEndMode::next));
    quint64 b = add(QStringLiteral("/media/b.mp4"), playing());
    quint64 c = add(QStringLiteral("/media/c.mp4"), playing());
    QSignalSpy prepared{controller.get(), &ProgramPlayoutController::macroPrepared};
    QSignalSpy cancelled{controller.get(), &ProgramPlayoutController::macroPrepareFailed};
    QSignalSpy transport{controller.get(), &ProgramPlayoutController::macroTransportFinished};

    // Reserves the standby for `item` and lets the prepare succeed.
    void reserve(quint64 item, quint64 requestId = 7)
    {
        QString error;
        QVERIFY2(controller->macroPrepare(requestId, item, &error), qPrintable(error));
        player->makeReady();
        controller->tick();
    }
};

} // namespace

class TestProgramMacroReservation : public QObject
{
    Q_OBJECT

private slots:
    void reservationEndingsAreAnsweredOnce_data();
    void reservationEndingsAreAnsweredOnce();
    void takeAnswersOnceWhenReady();
    void refusalsNameTheReason();
    void pendingRequestsAreAnsweredByTheDestructor();
    void transportIsAnsweredInTheTick();
};

void TestProgramMacroReservation::reservationEndingsAreAnsweredOnce_data()
{
    QTest::addColumn<Ending>("ending");
    QTest::addColumn<QString>("text");
    QTest::newRow("manual take") << Ending::ManualTake
                                 << QStringLiteral("Manual ON AIR replaced the macro standby reservation.");
    QTest::newRow("off air") << Ending::OffAir << QStringLiteral("OFF AIR released the macro standby reservation.");
    QTest::newRow("selection") << Ending::OperatorSelection
                               << QStringLiteral("Playlist selection changed the standby item.");
    QTest::newRow("settings") << Ending::SettingsChanged
                              << QStringLiteral("The macro standby item settings changed.");
    QTest::newRow("removed") << Ending::ItemRemoved << QStringLiteral("The macro standby item became unavailable.");
    QTest::newRow("automatic")
        << Ending::Automatic
        << QStringLiteral("Automatic NEXT/GOTO/REPEAT preparation has priority over the macro standby reservation.");
    QTest::newRow("replaced") << Ending::Replaced << QStringLiteral("The macro standby reservation was replaced.");
}

void TestProgramMacroReservation::reservationEndingsAreAnsweredOnce()
{
    QFETCH(Ending, ending);
    QFETCH(QString, text);
    MacroRig rig;
    QVERIFY(rig.putOnAir(rig.a));
    rig.reserve(rig.c);
    QCOMPARE(rig.prepared.size(), 1);
    QCOMPARE(rig.prepared.at(0).at(0).toULongLong(), quint64(7));
    QCOMPARE(rig.prepared.at(0).at(1).toBool(), true);
    QCOMPARE(rig.controller->macroTargetItemId(), rig.c);
    // The reservation holds the prepared deck against later selections' ticks.
    rig.controller->tick();
    QCOMPARE(rig.cancelled.size(), 0);

    switch (ending) {
    case Ending::ManualTake:
        rig.selection.select(rig.b);
        rig.controller->takeOnAir();
        break;
    case Ending::OffAir:
        rig.controller->offAir();
        break;
    case Ending::OperatorSelection:
        rig.selection.selectByOperator(rig.b);
        break;
    case Ending::SettingsChanged: {
        PlaylistItemSettings settings = rig.model.item(rig.c)->settings;
        settings.nominalVolumeTenthsDb = -60;
        QVERIFY(rig.model.setItemSettings(rig.c, settings));
        break;
    }
    case Ending::ItemRemoved:
        QVERIFY(rig.model.removeItem(rig.c));
        break;
    case Ending::Automatic:
        rig.player->position = 2500;  // the item on air enters its last second
        rig.controller->tick();
        break;
    case Ending::Replaced: {
        QString error;
        QVERIFY2(rig.controller->macroPrepare(8, rig.b, &error), qPrintable(error));
        break;
    }
    }
    QCOMPARE(rig.cancelled.size(), 1);
    QCOMPARE(rig.cancelled.at(0).at(0).toString(), text);
    QCOMPARE(rig.controller->macroTargetItemId(), ending == Ending::Replaced ? rig.b : quint64(0));
    for (int i = 0; i < 3; ++i)
        rig.controller->tick();
    rig.controller->offAir();
    // The replacing request is still pending: OFF AIR answers it, once.
    QCOMPARE(rig.cancelled.size(), 1);
    QCOMPARE(rig.prepared.size(), ending == Ending::Replaced ? 2 : 1);
}

void TestProgramMacroReservation::takeAnswersOnceWhenReady()
{
    MacroRig rig;
    QVERIFY(rig.putOnAir(rig.a));
    QString error;
    QVERIFY(rig.controller->macroTake(9, rig.b, false, true, 500, &error));
    rig.controller->tick();
    QCOMPARE(rig.prepared.size(), 0);
    rig.player->makeReady();
    rig.controller->tick();
    rig.controller->tick();
    QCOMPARE(rig.prepared.size(), 1);
    QCOMPARE(rig.prepared.at(0).at(1).toBool(), true);
    QCOMPARE(rig.controller->onAirItemId(), rig.b);
    QCOMPARE(rig.player->takeCrossfades.last(), true);
    QCOMPARE(rig.controller->crossfadeDurationMs(), qint64(500));
    QCOMPARE(rig.controller->macroTargetItemId(), quint64(0));

    // A refused take is answered with its text, once.
    rig.advance(500);
    QVERIFY(rig.controller->macroTake(10, rig.c, false, false, 1000, &error));
    rig.player->makeReady();
    rig.player->refuseTake = true;
    rig.controller->tick();
    rig.controller->tick();
    QCOMPARE(rig.prepared.size(), 2);
    QCOMPARE(rig.prepared.at(1).at(1).toBool(), false);
    QCOMPARE(rig.prepared.at(1).at(2).toString(), QStringLiteral("The prepared macro item could not be taken ON AIR."));
    QCOMPARE(rig.cancelled.size(), 0);
}

void TestProgramMacroReservation::refusalsNameTheReason()
{
    MacroRig rig;
    const quint64 still = rig.add(QStringLiteral("/media/s.png"), playing(), 3000, PlaylistMediaType::stillImage);
    const quint64 unknown = rig.add(QStringLiteral("/media/u.bin"), playing(), 3000, PlaylistMediaType::unknown);
    QVERIFY(rig.putOnAir(rig.a));
    rig.model.setDskItem(rig.b);
    QString error;
    QVERIFY(!rig.controller->macroPrepare(1, 0, &error));
    QCOMPARE(error, QStringLiteral("The macro target no longer exists."));
    QVERIFY(!rig.controller->macroPrepare(1, unknown, &error));
    QCOMPARE(error, QStringLiteral(
        "Macro preparation and ON AIR support video, audio and still-image files in standard playlists only."));
    QVERIFY(!rig.controller->macroPrepare(1, rig.b, &error));
    QCOMPARE(error, QStringLiteral("The macro target is currently used by DSK."));
    QVERIFY(!rig.controller->macroPrepare(1, rig.a, &error));
    QCOMPARE(error, QStringLiteral("Same-item ON AIR retake is disabled."));
    QVERIFY(!rig.controller->macroPrepare(0, still, &error));
    QCOMPARE(error, QStringLiteral("A macro preparation or ON AIR request is already pending, or its ID is invalid."));
    QVERIFY(!rig.controller->macroTake(1, still, false, true, 50, &error));
    QCOMPARE(error, QStringLiteral("The macro crossfade duration is outside the supported range."));
    QVERIFY(!rig.controller->macroTake(1, still, true, false, 1000, &error));
    QCOMPARE(error, QStringLiteral("Timed ON AIR requires this exact item to be ready."));

    QVERIFY(rig.controller->macroPrepare(1, still, &error));
    QVERIFY(error.isEmpty());
    QVERIFY(!rig.controller->macroPrepare(2, rig.c, &error));
    QCOMPARE(error, QStringLiteral("A macro preparation or ON AIR request is already pending, or its ID is invalid."));

    // A manual take waiting for its item keeps the macro off the standby.
    MacroRig queued;
    queued.selection.selectByOperator(queued.a);
    QVERIFY(queued.controller->takeOnAir());
    QVERIFY(!queued.controller->macroPrepare(1, queued.b, &error));
    QCOMPARE(error, QStringLiteral("Manual ON AIR or automatic NEXT/GOTO/REPEAT is already using the standby player."));

    QVERIFY(!rig.controller->macroTransport(3, QStringLiteral("rewind"), &error));
    QCOMPARE(error, QStringLiteral("Unknown macro transport operation."));
    QVERIFY(!rig.controller->macroSetRate(1.1, &error));
    QCOMPARE(error, QStringLiteral("The macro playback rate or current media is unsupported."));
    rig.player->refuseRate = true;
    QVERIFY(!rig.controller->macroSetRate(2.0, &error));
    QCOMPARE(error, QStringLiteral("The macro playback rate was not applied."));
    rig.player->refuseRate = false;
    QVERIFY(rig.controller->macroSetRate(2.0, &error));
}

void TestProgramMacroReservation::pendingRequestsAreAnsweredByTheDestructor()
{
    MacroRig rig;
    QVERIFY(rig.putOnAir(rig.a));
    QVERIFY(rig.controller->macroPrepare(5, rig.b));
    QVERIFY(rig.controller->macroTransport(6, QStringLiteral("pause")));
    rig.controller.reset();
    QCOMPARE(rig.prepared.size(), 1);
    QCOMPARE(rig.prepared.at(0).at(0).toULongLong(), quint64(5));
    QCOMPARE(rig.prepared.at(0).at(1).toBool(), false);
    QCOMPARE(rig.prepared.at(0).at(2).toString(), QStringLiteral("ON AIR is unavailable."));
    QCOMPARE(rig.transport.size(), 1);
    QCOMPARE(rig.transport.at(0).at(0).toULongLong(), quint64(6));
    QCOMPARE(rig.cancelled.size(), 0);
}

void TestProgramMacroReservation::transportIsAnsweredInTheTick()
{
    MacroRig rig;
    QString error;
    QVERIFY(!rig.controller->macroTransport(1, QStringLiteral("play"), &error));
    QCOMPARE(error, QStringLiteral("Macro transport requires a supported file ON AIR."));
    QVERIFY(rig.putOnAir(rig.a));

    QVERIFY(rig.controller->macroTransport(1, QStringLiteral("pause"), &error));
    QVERIFY(!rig.controller->macroTransport(2, QStringLiteral("play"), &error));
    QCOMPARE(error, QStringLiteral("A macro operation is already pending, or its ID is invalid."));
    QCOMPARE(rig.transport.size(), 0);
    rig.controller->tick();
    QCOMPARE(rig.transport.size(), 1);
    QCOMPARE(rig.transport.at(0).at(1).toBool(), true);

    rig.player->refusePlay = true;
    QVERIFY(rig.controller->macroTransport(2, QStringLiteral("play"), &error));
    rig.controller->tick();
    QCOMPARE(rig.transport.size(), 2);
    QCOMPARE(rig.transport.at(1).at(2).toString(), QStringLiteral("ON AIR playback did not start."));

    QVERIFY(rig.controller->macroTransport(3, QStringLiteral("offAir"), &error));
    rig.controller->tick();
    rig.controller->tick();
    QCOMPARE(rig.transport.size(), 3);
    QCOMPARE(rig.transport.at(2).at(1).toBool(), true);
    QCOMPARE(rig.controller->onAirItemId(), quint64(0));
}

QTEST_GUILESS_MAIN(TestProgramMacroReservation)
#include "tst_program_macro_reservation.moc"
