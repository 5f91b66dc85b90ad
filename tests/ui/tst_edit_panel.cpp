#include "edit/edit_panel_view.h"
#include "ui/audio_delay_control.h"
#include "ui/audio_fader_widget.h"
#include "ui/edit_fade_control.h"
#include "ui/edit_panel.h"
#include "ui/edit_repeat_control.h"
#include "ui/edit_time_field.h"
#include "ui/edit_video_surface.h"
#include "ui/equalizer_editor.h"
#include "ui/range_marker_slider.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QToolButton>
#include <QTranslator>
#include <QtTest>

#include <memory>
#include <vector>

using namespace tarnix;

Q_DECLARE_METATYPE(tarnix::EditItemView)

namespace {

constexpr qint64 kThirtyDaysMs = 2'592'000'000;

EditItemView fileItem(quint64 id = 7)
{
    EditItemView item;
    item.itemId = id;
    item.displayName = QStringLiteral("clip.mp4");
    item.sourceType = PlaylistSourceType::file;
    item.mediaType = PlaylistMediaType::video;
    return item;
}

// Every request signal of the view, each with its spy.
struct RequestSpies {
    std::vector<std::unique_ptr<QSignalSpy>> spies;

    explicit RequestSpies(EditPanelView *view)
    {
        const QMetaObject &meta = EditPanelView::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            if (method.methodType() == QMetaMethod::Signal)
                spies.push_back(std::make_unique<QSignalSpy>(view, method));
        }
    }
    QStringList fired() const
    {
        QStringList names;
        for (const auto &spy : spies)
            if (!spy->isEmpty())
                names << QString::fromLatin1(spy->signal());
        return names;
    }
};

// Types over the field, as a paste or an input method would, then Enter.
void typeAndEnter(QLineEdit *field, const QString &text)
{
    field->setFocus();
    field->selectAll();
    field->insert(text);
    QTest::keyClick(field, Qt::Key_Return);
}

} // namespace

class TestEditPanel : public QObject
{
    Q_OBJECT

private slots:
    void typedPointTimes_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qint64>("sentMs");  // -1: nothing is sent
        QTest::newRow("hundredths") << "00:00:10.50" << qint64(10'500);
        QTest::newRow("trimmed") << "  01:02:03.04 " << qint64(3'723'040);
        QTest::newRow("six-digit hours") << "123456:00:00.00" << qint64(444'441'600'000);
        QTest::newRow("minutes past 59") << "00:61:00.00" << qint64(-1);
        QTest::newRow("seven-digit hours") << "1234567:00:00.00" << qint64(-1);
        QTest::newRow("one hundredth digit") << "00:00:10.5" << qint64(-1);
        QTest::newRow("wide digits") << QString::fromUtf8("００:００:１０.５０") << qint64(-1);
        QTest::newRow("empty") << "" << qint64(-1);
    }

    // The In field sends what it reads on Enter; anything it cannot read
    // sends nothing and gives way to the shown value.
    void typedPointTimes()
    {
        QFETCH(QString, typed);
        QFETCH(qint64, sentMs);
        EditPanel panel;
        EditItemView item = fileItem();
        item.settings.inPointMs = 2'000;
        panel.view()->showItem(item);
        auto *field = panel.findChild<EditTimeField *>("editInTimeField");
        QCOMPARE(field->text(), QStringLiteral("00:00:02.00"));
        QSignalSpy sent(panel.view(), &EditPanelView::inPointTimeRequested);

        typeAndEnter(field, typed);
        if (sentMs < 0) {
            QCOMPARE(sent.size(), 0);
            QCOMPARE(field->text(), QStringLiteral("00:00:02.00"));
        } else {
            QCOMPARE(sent.size(), 1);
            QCOMPARE(sent.at(0).at(0).toLongLong(), sentMs);
            QCOMPARE(EditTimeField::parse(field->text()), std::optional<qint64>(sentMs));
        }
    }

    // The session answers a refused point by showing the stored settings:
    // the Out field returns to the model's value, whether the change was
    // typed or taken with SET OUT. Without an Out point it shows the end.
    void refusedOutPointShowsTheModelAgain()
    {
        EditPanel panel;
        EditPanelView *view = panel.view();
        EditItemView item = fileItem();
        view->showItem(item);
        auto *field = panel.findChild<EditTimeField *>("editOutTimeField");
        auto *state = panel.findChild<QLabel *>("editOutPointStateLabel");
        QCOMPARE(field->text(), QString());
        view->showPosition(1'000, 60'000);
        QCOMPARE(field->text(), QStringLiteral("00:01:00.00"));
        QCOMPARE(state->text(), QStringLiteral("Out point is at the default media duration"));

        item.settings.outPointMs = 20'000;
        view->showItem(item);
        QCOMPARE(field->text(), QStringLiteral("00:00:20.00"));
        QCOMPARE(state->text(), QStringLiteral("A custom Out point is set"));

        QSignalSpy typed(view, &EditPanelView::outPointTimeRequested);
        typeAndEnter(field, QStringLiteral("00:00:30.00"));
        QCOMPARE(typed.size(), 1);
        view->showItem(item);
        QCOMPARE(field->text(), QStringLiteral("00:00:20.00"));

        QSignalSpy setOut(view, &EditPanelView::setOutRequested);
        view->showPosition(45'000, 60'000);
        QTest::mouseClick(panel.findChild<QPushButton *>("editSetOutButton"), Qt::LeftButton);
        QCOMPARE(setOut.size(), 1);
        view->showItem(item);
        QCOMPARE(field->text(), QStringLiteral("00:00:20.00"));
        // Settings shown while the operator types leave the typing alone;
        // typing given up with Escape gives way to the stored value.
        panel.show();
        QVERIFY(QTest::qWaitForWindowActive(&panel));
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, QStringLiteral("00:00:40.00"));
        item.settings.outPointMs = 25'000;
        view->showItem(item);
        QCOMPARE(field->text(), QStringLiteral("00:00:40.00"));
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(field->text(), QStringLiteral("00:00:25.00"));
    }

    // Showing an item, its list of destinations, the position and PFL sends
    // no request back, and every control shows the item's settings.
    void showItemSetsEverythingAndSendsNothing()
    {
        EditPanel panel;
        EditPanelView *view = panel.view();
        RequestSpies spies(view);
        EditItemView item = fileItem();
        PlaylistItemSettings &s = item.settings;
        s.inPointMs = 1'500;
        s.outPointMs = 9'000;
        s.startMode = PlaylistStartMode::play;
        s.endMode = PlaylistEndMode::repeat;
        s.repeatCount = 3;
        s.repeatEndMode = PlaylistRepeatEndMode::next;
        s.fadeIn = {true, 2'500};
        s.fadeOut = {false, 700};
        s.endCrossfade = {true, 60'000};
        s.gotoTargetItemId = 9;
        s.nominalVolumeTenthsDb = -65;
        s.nominalAudioDelayFrames = 4;
        s.nominalEqLowTenthsDb = 30;
        s.nominalEqMidTenthsDb = -15;
        s.nominalEqHighTenthsDb = 150;
        view->showGotoEntries({{9, 1, 2, QStringLiteral("Next clip"), false, true}});
        view->showItem(item);
        view->showPosition(2'000, 10'000);
        view->showPlaying(true);
        view->showPfl(true, true);
        view->showLevels(-6, -7, -12, -13);
        QCOMPARE(spies.fired(), QStringList());

        QVERIFY(panel.findChild<QPushButton *>("editStartModePlayButton")->isChecked());
        QVERIFY(panel.findChild<QPushButton *>("editEndModeRepeatButton")->isChecked());
        auto *repeat = panel.findChild<EditRepeatControl *>("editRepeatControl");
        QCOMPARE(repeat->count(), 3);
        QCOMPARE(repeat->endMode(), PlaylistRepeatEndMode::next);
        auto *fadeIn = panel.findChild<EditFadeControl *>("editFadeInControl");
        auto *fadeOut = panel.findChild<EditFadeControl *>("editFadeOutControl");
        auto *crossfade = panel.findChild<EditFadeControl *>("editCrossfadeControl");
        QVERIFY(fadeIn->isFadeEnabled() && !fadeOut->isFadeEnabled() && crossfade->isFadeEnabled());
        QCOMPARE(fadeIn->durationMs(), 2'500);
        QCOMPARE(fadeOut->durationMs(), 700);
        QCOMPARE(crossfade->durationMs(), 60'000);
        QCOMPARE(panel.findChild<AudioFaderWidget *>("editNominalVolumeFader")->value(), -65);
        QCOMPARE(panel.findChild<AudioDelayControl *>("editNominalDelay")->frames(), 4);
        auto *eq = panel.findChild<EqualizerEditor *>("editNominalEq");
        QCOMPARE(eq->lowDb(), 3.0);
        QCOMPARE(eq->midDb(), -1.5);
        QCOMPARE(eq->highDb(), 15.0);
        QCOMPARE(panel.findChild<QComboBox *>("editGotoTargetCombo")->currentData().toULongLong(), quint64(9));
        auto *timeline = panel.findChild<RangeMarkerSlider *>("editTimeline");
        QCOMPARE(timeline->inMarkerMs(), std::optional<qint64>(1'500));
        QCOMPARE(timeline->outMarkerMs(), std::optional<qint64>(9'000));
        QCOMPARE(panel.findChild<QPushButton *>("editPflButton")->text(), QStringLiteral("PFL ON"));

        // The operator's changes are sent; a refused one is undone by the
        // next showItem.
        QTest::mouseClick(panel.findChild<QPushButton *>("editEndModeNextButton"), Qt::LeftButton);
        QCOMPARE(spies.fired(), QStringList{"endModeRequested(PlaylistEndMode)"});
        view->showItem(item);
        QVERIFY(panel.findChild<QPushButton *>("editEndModeRepeatButton")->isChecked());
        fadeOut->findChild<QCheckBox *>()->click();
        auto *longer = fadeIn->findChildren<QToolButton *>("fadeDurationStepButton").value(1);
        longer->click();
        panel.findChild<QToolButton *>("editRepeatCountDownButton")->click();
        QCOMPARE(spies.fired().size(), 4);
        QSignalSpy fadeInSent(view, &EditPanelView::fadeInRequested);
        longer->click();
        QCOMPARE(fadeInSent.value(0), (QVariantList{true, qint64(2'700)}));
        view->showItem(item);
        QVERIFY(!fadeOut->isFadeEnabled());
        QCOMPARE(fadeIn->durationMs(), 2'500);
        QCOMPARE(repeat->count(), 3);
    }

    void enableRules_data()
    {
        QTest::addColumn<EditItemView>("item");
        QTest::addColumn<bool>("transport");
        QTest::addColumn<bool>("points");
        QTest::addColumn<bool>("modes");
        QTest::addColumn<bool>("audio");
        EditItemView none;
        EditItemView file = fileItem();
        EditItemView locked = fileItem();
        locked.settingsLocked = true;
        locked.pointLock = EditPointLock::SettingsLocked;
        locked.pointLockReason = QStringLiteral("This item's settings are locked. Its In/Out points cannot be changed.");
        EditItemView onAir = fileItem();
        onAir.pointLock = EditPointLock::OnAir;
        onAir.pointLockReason = QStringLiteral("The In/Out points of an item currently on air cannot be changed.");
        EditItemView slides = fileItem();
        slides.sourceType = PlaylistSourceType::powerpoint;
        EditItemView pdf = fileItem();
        pdf.sourceType = PlaylistSourceType::pdf;
        EditItemView live = fileItem();
        live.sourceType = PlaylistSourceType::uvc;
        live.settings.startMode = PlaylistStartMode::pause;
        QTest::newRow("no item") << none << false << false << false << false;
        QTest::newRow("file") << file << true << true << true << true;
        QTest::newRow("settings locked") << locked << true << false << false << false;
        QTest::newRow("on air") << onAir << true << false << true << true;
        QTest::newRow("powerpoint") << slides << true << false << false << true;
        QTest::newRow("pdf") << pdf << true << false << false << true;
        QTest::newRow("live") << live << false << false << false << true;
    }

    // Which controls apply follows the kind of item and its locks; the
    // status line stays whatever is loaded.
    void enableRules()
    {
        QFETCH(EditItemView, item);
        QFETCH(bool, transport);
        QFETCH(bool, points);
        QFETCH(bool, modes);
        QFETCH(bool, audio);
        EditPanel panel;
        EditPanelView *view = panel.view();
        view->showPosition(0, 10'000);
        view->showPfl(true, false);
        view->showItem(item);

        for (const char *name : {"editPlayButton", "editRewindButton", "editFrameForwardButton", "editGoToEndButton"})
            QCOMPARE(panel.findChild<QToolButton *>(name)->isEnabled(), transport);
        QCOMPARE(panel.findChild<RangeMarkerSlider *>("editTimeline")->isEnabled(), transport);
        auto *setIn = panel.findChild<QPushButton *>("editSetInButton");
        auto *inField = panel.findChild<EditTimeField *>("editInTimeField");
        QCOMPARE(setIn->isEnabled(), points);
        QCOMPARE(inField->isEnabled(), points);
        QCOMPARE(panel.findChild<EditTimeField *>("editOutTimeField")->isEnabled(), points);
        if (item.pointLock != EditPointLock::None) {
            QCOMPARE(setIn->toolTip(), item.pointLockReason);
            QCOMPARE(inField->toolTip(), item.pointLockReason);
        }
        for (const char *name : {"editStartModePauseButton", "editEndModeGotoButton"})
            QCOMPARE(panel.findChild<QPushButton *>(name)->isEnabled(), modes);
        QCOMPARE(panel.findChild<EditFadeControl *>("editFadeOutControl")->isEnabled(), modes);
        QCOMPARE(panel.findChild<QComboBox *>("editGotoTargetCombo")->isEnabled(), modes);
        QCOMPARE(panel.findChild<AudioFaderWidget *>("editNominalVolumeFader")->isEnabled(), audio);
        QCOMPARE(panel.findChild<AudioDelayControl *>("editNominalDelay")->isEnabled(), audio);
        QCOMPARE(panel.findChild<EqualizerEditor *>("editNominalEq")->isEnabled(), audio);
        QCOMPARE(panel.findChild<QPushButton *>("editPflButton")->isEnabled(), item.itemId != 0);
        QVERIFY(panel.findChild<QLabel *>("editStatusLabel")->isEnabled());
        if (item.sourceType == PlaylistSourceType::uvc)
            QVERIFY(panel.findChild<QPushButton *>("editStartModePlayButton")->isChecked());

        // A failed load stops the transport and nothing else.
        view->setTransportEnabled(false);
        QVERIFY(!panel.findChild<QToolButton *>("editPlayButton")->isEnabled());
        QCOMPARE(setIn->isEnabled(), points);
        QCOMPARE(panel.findChild<AudioFaderWidget *>("editNominalVolumeFader")->isEnabled(), audio);
    }

    // Every item of every playlist is a destination; the loaded item and
    // what cannot play are listed but cannot be chosen. The list and the
    // repeat options show only with their end modes.
    void gotoDestinations()
    {
        EditPanel panel;
        EditPanelView *view = panel.view();
        EditItemView item = fileItem(7);
        item.settings.endMode = PlaylistEndMode::goto_;
        view->showGotoEntries({
            {7, 1, 1, QStringLiteral("Opening"), false, true},
            {8, 1, 2, QStringLiteral("Interview"), true, true},
            {9, 2, 1, QStringLiteral("Slides"), false, false},
            {10, 2, 2, QStringLiteral("Closing"), false, true},
        });
        view->showItem(item);
        auto *combo = panel.findChild<QComboBox *>("editGotoTargetCombo");
        QCOMPARE(combo->count(), 4);
        QCOMPARE(combo->itemText(0), QStringLiteral("P1-1  Opening"));
        QCOMPARE(combo->itemText(1), QStringLiteral("P1-2  Interview [MEDIA OFFLINE]"));
        QCOMPARE(combo->itemText(3), QStringLiteral("P2-2  Closing"));
        auto *model = qobject_cast<QStandardItemModel *>(combo->model());
        QVERIFY(!model->item(0)->isEnabled());  // the loaded item itself
        QVERIFY(model->item(1)->isEnabled());   // offline is still a destination
        QVERIFY(!model->item(2)->isEnabled());
        QVERIFY(model->item(3)->isEnabled());
        QCOMPARE(combo->currentIndex(), -1);
        QCOMPARE(combo->placeholderText(), QStringLiteral("Select destination"));

        QSignalSpy chosen(view, &EditPanelView::gotoTargetRequested);
        emit combo->activated(3);
        QCOMPARE(chosen.value(0).value(0).toULongLong(), quint64(10));
        item.settings.gotoTargetItemId = 10;
        view->showItem(item);
        // A rebuilt list keeps the stored destination.
        view->showGotoEntries({{10, 1, 1, QStringLiteral("Closing"), false, true}});
        QCOMPARE(combo->currentData().toULongLong(), quint64(10));

        auto *gotoRow = panel.findChild<QWidget *>("editGotoRow");
        auto *repeat = panel.findChild<EditRepeatControl *>("editRepeatControl");
        QVERIFY(gotoRow->isVisibleTo(&panel) && !repeat->isVisibleTo(&panel));
        item.settings.endMode = PlaylistEndMode::repeat;
        view->showItem(item);
        QVERIFY(!gotoRow->isVisibleTo(&panel) && repeat->isVisibleTo(&panel));
        item.settings.endMode = PlaylistEndMode::next;
        view->showItem(item);
        QVERIFY(!gotoRow->isVisibleTo(&panel) && !repeat->isVisibleTo(&panel));
    }

    // A press anywhere on the groove seeks there at once; the scaled units
    // of a 30-day media still land on the right millisecond range.
    void timelineSeeks()
    {
        RangeMarkerSlider slider;
        slider.resize(400, slider.sizeHint().height());
        QSignalSpy seeks(&slider, &RangeMarkerSlider::seekRequested);
        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(200, 5));
        QCOMPARE(seeks.size(), 0);  // no media, no seek
        QCOMPARE(slider.accessibleDescription(), QStringLiteral("In and Out markers are not set"));

        slider.setDurationMs(kThirtyDaysMs);
        QCOMPARE(slider.maximum(), std::numeric_limits<int>::max());
        QCOMPARE(slider.valueToMs(slider.maximum()), kThirtyDaysMs);
        QCOMPARE(slider.valueToMs(slider.msToValue(kThirtyDaysMs / 3)), kThirtyDaysMs / 3);
        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(200, 5));
        QCOMPARE(seeks.size(), 1);
        const qint64 middle = seeks.at(0).at(0).toLongLong();
        const qint64 pixelMs = kThirtyDaysMs / 380;
        QVERIFY2(qAbs(middle - 1'296'000'000) <= pixelMs, qPrintable(QString::number(middle)));
        QCOMPARE(slider.positionMs(), middle);

        // A drag seeks along; the player's reports wait for the release.
        QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(0, 5));
        QCOMPARE(seeks.last().at(0).toLongLong(), 0);
        QTest::mouseMove(&slider, QPoint(500, 5));
        QCOMPARE(seeks.last().at(0).toLongLong(), kThirtyDaysMs);
        slider.setPositionMs(1'000);
        QCOMPARE(slider.positionMs(), kThirtyDaysMs);
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(500, 5));
        slider.setPositionMs(1'000);
        QVERIFY(qAbs(slider.positionMs() - 1'000) <= 2);

        // The wheel is not a seek.
        const int before = seeks.size();
        QWheelEvent wheel(QPointF(200, 5), slider.mapToGlobal(QPointF(200, 5)), {}, QPoint(0, 120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&slider, &wheel);
        QCOMPARE(seeks.size(), before);
        QVERIFY(qAbs(slider.positionMs() - 1'000) <= 2);

        // Media that fit are in plain milliseconds.
        slider.setDurationMs(90'000);
        QCOMPARE(slider.maximum(), 90'000);
        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(399, 5));
        QCOMPARE(seeks.last().at(0).toLongLong(), 90'000);

        slider.setInMarkerMs(1'200);
        QCOMPARE(slider.accessibleDescription(),
                 QStringLiteral("In marker: 1200 ms; Out marker: not set; timeline before In is inactive"));
        slider.setOutMarkerMs(80'000);
        QCOMPARE(slider.accessibleDescription(),
                 QStringLiteral("In marker: 1200 ms; Out marker: 80000 ms; timeline before In and after Out is inactive"));
    }

    // Both looks mark the same places: the part before In and after Out is
    // darker than the span between them, whichever skin paints it, and the
    // hardware look lights that span and draws a red playhead.
    void timelineLooks()
    {
        RangeMarkerSlider slider;
        slider.resize(400, slider.sizeHint().height());
        slider.setDurationMs(100'000);
        slider.setInMarkerMs(25'000);
        slider.setOutMarkerMs(75'000);
        slider.setPositionMs(50'000);
        const int trackY = 9;
        auto brightness = [](const QImage &image, int x, int y) { return qGray(image.pixel(x, y)); };
        for (const QString &skin : {QString(), QStringLiteral("hardware")}) {
            qApp->setProperty("controllerSkinKey", skin);
            const QImage image = slider.grab().toImage();
            const int before = brightness(image, 30, trackY);
            const int inside = brightness(image, 120, trackY);
            const int after = brightness(image, 370, trackY);
            QVERIFY2(inside > before && inside > after, qPrintable(QStringLiteral("%1: %2 %3 %4").arg(skin).arg(before).arg(inside).arg(after)));
            const QColor playhead = image.pixelColor(200, 0);
            if (skin.isEmpty()) {
                QCOMPARE(image.pixelColor(120, trackY), QColor(QStringLiteral("#44494b")));
                QCOMPARE(image.pixelColor(30, trackY), QColor(QStringLiteral("#30383b")));
            } else {
                QVERIFY2(image.pixelColor(120, trackY).green() > image.pixelColor(120, trackY).red() + 20,
                         qPrintable(image.pixelColor(120, trackY).name()));
                QVERIFY2(playhead.red() > 200 && playhead.green() < 120, qPrintable(playhead.name()));
            }
        }
        qApp->setProperty("controllerSkinKey", QVariant());
    }

    // Holding rewind or fast-forward scans until released; play, pause and
    // PFL show what the session says, not the press.
    void transportAndPfl()
    {
        EditPanel panel;
        EditPanelView *view = panel.view();
        view->showItem(fileItem());
        view->showPosition(0, 10'000);
        RequestSpies spies(view);
        auto *rewind = panel.findChild<QToolButton *>("editRewindButton");
        QTest::mousePress(rewind, Qt::LeftButton);
        QCOMPARE(spies.fired(), QStringList{"scanBackwardRequested()"});
        QTest::mouseRelease(rewind, Qt::LeftButton);
        QCOMPARE(spies.fired(), (QStringList{"scanBackwardRequested()", "scanStopRequested()"}));

        QSignalSpy steps(view, &EditPanelView::frameStepRequested);
        QTest::mouseClick(panel.findChild<QToolButton *>("editFrameBackButton"), Qt::LeftButton);
        QTest::mouseClick(panel.findChild<QToolButton *>("editFrameForwardButton"), Qt::LeftButton);
        QCOMPARE(steps.value(0).value(0).toInt(), -1);
        QCOMPARE(steps.value(1).value(0).toInt(), 1);

        auto *play = panel.findChild<QToolButton *>("editPlayButton");
        QSignalSpy plays(view, &EditPanelView::playRequested);
        QTest::mouseClick(play, Qt::LeftButton);
        QCOMPARE(plays.size(), 1);
        QVERIFY(!play->isChecked());
        view->showPlaying(true);
        QVERIFY(play->isChecked());

        auto *pfl = panel.findChild<QPushButton *>("editPflButton");
        QVERIFY(!pfl->isEnabled());  // until the PFL output is there
        view->showPfl(true, false);
        QCOMPARE(pfl->text(), QStringLiteral("PFL OFF"));
        QCOMPARE(pfl->toolTip(), QStringLiteral("PFL OFF — listen before nominal volume."));
        QSignalSpy pflSent(view, &EditPanelView::pflRequested);
        QTest::mouseClick(pfl, Qt::LeftButton);
        QCOMPARE(pflSent.value(0).value(0).toBool(), true);
        QVERIFY(!pfl->isChecked());

        auto *status = panel.findChild<QLabel *>("editStatusLabel");
        view->showStatus(QStringLiteral("Failed to load the file into EDIT."), true);
        QCOMPARE(status->text(), QStringLiteral("EDIT ERROR | Failed to load the file into EDIT."));
        QCOMPARE(status->property("error").toBool(), true);
        view->showStatus(QStringLiteral("EDIT loaded | clip.mp4"), false);
        QCOMPARE(status->text(), QStringLiteral("EDIT loaded | clip.mp4"));
    }

    // The picture keeps its shape with black bars, on the monitor of the
    // kind of item loaded.
    void monitorPicture()
    {
        EditVideoSurface standalone;
        standalone.resize(400, 300);
        QImage frame(160, 90, QImage::Format_RGB32);
        frame.fill(Qt::white);
        standalone.showFrame(frame);
        QCOMPARE(standalone.pictureRect(), QRect(0, 37, 400, 225));
        const QImage shown = standalone.grab().toImage();
        QCOMPARE(shown.pixelColor(200, 10), QColor(Qt::black));
        QCOMPARE(shown.pixelColor(200, 150), QColor(Qt::white));

        EditPanel panel;
        EditPanelView *view = panel.view();
        EditVideoSurface *surface = panel.videoSurface();
        QCOMPARE(surface->objectName(), QStringLiteral("edit-video-surface"));
        view->showVideoFrame(frame);
        QVERIFY(!surface->frame().isNull());
        view->showLivePreview(true);
        QVERIFY(surface->frame().isNull());
        view->showVideoFrame(frame);
        auto *live = panel.findChild<EditVideoSurface *>("editLivePreview");
        QVERIFY(!live->frame().isNull());
        QVERIFY(surface->frame().isNull());
    }

    // A change of language re-sets every text, those of the controls the
    // panel is made of included, and keeps what the session told.
    void languageChange()
    {
        EditPanel panel;
        EditPanelView *view = panel.view();
        EditItemView item = fileItem();
        item.settings.inPointMs = 1'000;
        view->showItem(item);
        view->showStatus(QStringLiteral("x"), true);
        auto *title = panel.findChild<QLabel *>("editStartModeTitle");
        auto *fadeIn = panel.findChild<EditFadeControl *>("editFadeInControl")->findChild<QCheckBox *>();
        auto *status = panel.findChild<QLabel *>("editStatusLabel");
        QCOMPARE(title->text(), QStringLiteral("START MODE"));

        QTranslator japanese;
        QVERIFY(japanese.load(QStringLiteral(":/i18n/tarnix_ja.qm")));
        QCoreApplication::installTranslator(&japanese);
        QCoreApplication::sendPostedEvents();  // the change reaches widgets as posted events
        QCOMPARE(title->text(), QString::fromUtf8("開始モード"));
        QCOMPARE(fadeIn->text(), QString::fromUtf8("フェードイン"));
        QCOMPARE(panel.findChild<QLabel *>("editRepeatCountTitle")->text(), QString::fromUtf8("回数"));
        QCOMPARE(panel.findChild<QLabel *>("editInPointStateLabel")->text(), QString::fromUtf8("In 点が設定されています"));
        QVERIFY(panel.findChild<RangeMarkerSlider *>("editTimeline")->accessibleDescription().startsWith(
            QString::fromUtf8("In マーカー: 1000 ms")));
        QCOMPARE(status->text(), QStringLiteral("EDIT ERROR | x"));
        QCoreApplication::removeTranslator(&japanese);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(title->text(), QStringLiteral("START MODE"));
    }

    // A running position repaints the timeline and the time, and lays out
    // nothing: the panel shares the window with the program panel.
    void runningPositionDoesNotRelayout()
    {
        struct LayoutRequests : QObject {
            int count = 0;
            bool eventFilter(QObject *, QEvent *event) override
            {
                count += event->type() == QEvent::LayoutRequest;
                return false;
            }
        } requests;
        EditPanel panel;
        EditPanelView *view = panel.view();
        panel.resize(1000, 450);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        view->showItem(fileItem());
        view->showPosition(0, 3'600'000);
        for (int pass = 0; pass < 8; ++pass)
            QCoreApplication::processEvents();
        qApp->installEventFilter(&requests);
        for (qint64 position = 0; position < 3'600'000; position += 111'111) {
            view->showPosition(position, 3'600'000);
            view->showLevels(-20, -20, -30, -30);
            QCoreApplication::processEvents();
        }
        qApp->removeEventFilter(&requests);
        QCOMPARE(requests.count, 0);
    }
};

QTEST_MAIN(TestEditPanel)
#include "tst_edit_panel.moc"
