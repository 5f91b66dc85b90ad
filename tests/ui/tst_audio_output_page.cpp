#include "ui/audio_output_page.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using namespace tarnix;

class TestAudioOutputPage : public QObject
{
    Q_OBJECT

private slots:
    // The page offers what exists, keeps a saved device that is gone as
    // unavailable, warns while PFL and ON AIR would share a device, and
    // sends exactly what the operator picked.
    void choosesTheDevices()
    {
        AudioOutputPage page;
        page.setDevices({{"onair", "Main"}, {"phones", "Phones"}}, "onair");
        page.setSaved("usb-box", "@system-default", true);
        auto *program = page.findChild<QComboBox *>("programOutputDeviceCombo");
        auto *pfl = page.findChild<QComboBox *>("pflOutputDeviceCombo");
        auto *warning = page.findChild<QLabel *>("audioOutputSameDeviceWarning");
        QCOMPARE(program->currentText(), QStringLiteral("Unavailable \u2014 usb-box"));
        QCOMPARE(program->itemText(0), QStringLiteral("System Default"));
        QCOMPARE(pfl->itemText(0), QStringLiteral("No Device"));
        QCOMPARE(pfl->currentData().toString(), QStringLiteral("@system-default"));
        QVERIFY(page.findChild<QCheckBox *>("useDefaultWhenMissingCheckBox")->isChecked());
        QVERIFY(warning->isHidden());

        program->setCurrentIndex(0);  // the default, which PFL's default also is
        QVERIFY(!warning->isHidden());
        pfl->setCurrentIndex(pfl->findData(QStringLiteral("phones")));
        QVERIFY(warning->isHidden());
        // ON AIR still plays to the phones until it is next OFF AIR.
        page.setCurrentProgram("PHONES", "Waiting until ON AIR and BGM are stopped.");
        QVERIFY(!warning->isHidden());
        QCOMPARE(page.findChild<QLabel *>("currentProgramOutputLabel")->text(), QStringLiteral("Current ON AIR output: Phones"));

        // A new list keeps the unapplied choice.
        page.setDevices({{"phones", "Phones"}, {"onair", "Main"}, {"hdmi", "HDMI"}}, "onair");
        QCOMPARE(pfl->currentData().toString(), QStringLiteral("phones"));

        QSignalSpy apply(&page, &AudioOutputPage::applyRequested);
        page.findChild<QPushButton *>("applyAudioOutputsButton")->click();
        QCOMPARE(apply.size(), 1);
        QCOMPARE(apply.at(0).at(0).toString(), QString());
        QCOMPARE(apply.at(0).at(1).toString(), QStringLiteral("phones"));
        QCOMPARE(apply.at(0).at(2).toBool(), true);
    }
};

QTEST_MAIN(TestAudioOutputPage)
#include "tst_audio_output_page.moc"
