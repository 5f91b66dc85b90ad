#include "playlist/playlist_records.h"
#include "playlist/playlist_text.h"
#include "playlist/playlist_validation.h"

#include <QDir>
#include <QFile>
#include <QMetaEnum>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <type_traits>

using namespace tarnix;

// "goto" is 4 in one end-mode numbering and 3 in the other: neither type may
// silently stand in for the other.
static_assert(!std::is_convertible_v<PlaylistEndMode, PlaylistRepeatEndMode>);
static_assert(!std::is_convertible_v<PlaylistRepeatEndMode, PlaylistEndMode>);

namespace {

// Calls f with a value of the enum named in a data row, so one table drives
// every enum through the same overloads.
template <typename F>
void withEnum(const QString &name, F &&f)
{
    if (name == u"StartMode") f(PlaylistStartMode{});
    else if (name == u"EndMode") f(PlaylistEndMode{});
    else if (name == u"RepeatEndMode") f(PlaylistRepeatEndMode{});
    else if (name == u"ItemColor") f(PlaylistItemColor{});
    else if (name == u"Mode") f(PlaylistMode{});
    else if (name == u"SourceType") f(PlaylistSourceType{});
    else if (name == u"MediaType") f(PlaylistMediaType{});
    else if (name == u"PowerPointMode") f(PlaylistPowerPointMode{});
    else QFAIL("unknown enum in test data");
}

} // namespace

class TestPlaylistRecords : public QObject {
    Q_OBJECT
    QTemporaryDir tempDir;

private slots:
    void initTestCase()
    {
        QVERIFY(tempDir.isValid());
        QVERIFY(QFile(tempDir.filePath("clip.mp4")).open(QIODevice::WriteOnly));
        QVERIFY(QDir(tempDir.path()).mkdir("folder"));
    }

    void enumTextRoundTrip_data()
    {
        QTest::addColumn<QString>("enumName");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("text");
        const QList<std::pair<QString, QStringList>> table = {
            {"StartMode", {"pause", "play"}},
            {"EndMode", {"stop", "pause", "repeat", "next", "goto"}},
            {"RepeatEndMode", {"stop", "pause", "next", "goto"}},
            {"ItemColor", {"default", "red", "yellow", "blue", "green"}},
            {"Mode", {"standard", "bgm"}},
            {"SourceType", {"file", "uvc", "powerpoint", "pdf"}},
            {"MediaType", {"unknown", "video", "audio", "stillImage", "presentation", "pdf"}},
            {"PowerPointMode", {"none", "native", "video", "pngSequence"}},
        };
        for (const auto &[name, texts] : table) {
            for (int n = 0; n < texts.size(); ++n)
                QTest::addRow("%s/%s", qPrintable(name), qPrintable(texts[n])) << name << n << texts[n];
        }
    }
    void enumTextRoundTrip()
    {
        QFETCH(QString, enumName);
        QFETCH(int, number);
        QFETCH(QString, text);
        withEnum(enumName, [&](auto tag) {
            using Enum = decltype(tag);
            QCOMPARE(toText(static_cast<Enum>(number)), text);
            QCOMPARE(fromText<Enum>(text), std::optional(static_cast<Enum>(number)));
        });
    }

    void enumTextRefusals_data()
    {
        QTest::addColumn<QString>("enumName");
        QTest::addColumn<QString>("text");
        QTest::newRow("capitalised") << "StartMode" << "Pause";
        QTest::newRow("empty") << "EndMode" << "";
        QTest::newRow("trailing space") << "EndMode" << "stop ";
        QTest::newRow("repeat is no repeat end mode") << "RepeatEndMode" << "repeat";
        QTest::newRow("enumerator spelling") << "ItemColor" << "default_";
        QTest::newRow("number") << "Mode" << "1";
        QTest::newRow("lower-case still image") << "MediaType" << "stillimage";
        QTest::newRow("another enum's text") << "PowerPointMode" << "pdf";
    }
    void enumTextRefusals()
    {
        QFETCH(QString, enumName);
        QFETCH(QString, text);
        withEnum(enumName, [&](auto tag) { QVERIFY(!fromText<decltype(tag)>(text)); });
    }

    void outOfRangeWrites_data()
    {
        QTest::addColumn<QString>("enumName");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("expected");
        QTest::newRow("end mode -1") << "EndMode" << -1 << "";
        QTest::newRow("end mode 5") << "EndMode" << 5 << "";
        QTest::newRow("colour 5") << "ItemColor" << 5 << "";
        QTest::newRow("media type 6") << "MediaType" << 6 << "";
        QTest::newRow("source type 4") << "SourceType" << 4 << "";
        QTest::newRow("powerpoint mode 4") << "PowerPointMode" << 4 << "";
        QTest::newRow("repeat end mode 4") << "RepeatEndMode" << 4 << "pause";
        QTest::newRow("mode -1") << "Mode" << -1 << "standard";
    }
    void outOfRangeWrites()
    {
        QFETCH(QString, enumName);
        QFETCH(int, number);
        QFETCH(QString, expected);
        withEnum(enumName, [&](auto tag) { QCOMPARE(toText(static_cast<decltype(tag)>(number)), expected); });
    }

    void metaTypesAndFreshDocument()
    {
        registerPlaylistMetaTypes();
        registerPlaylistMetaTypes();
        PlaylistDocument document = PlaylistDocument::createNew();
        QCOMPARE(document.playlists.size(), 1);
        QCOMPARE(document.playlists.first().number, document.activePlaylistNumber);
        QVERIFY(!document.documentId.startsWith('{'));
        QVERIFY(!QUuid::fromString(document.documentId).isNull());
        QVERIFY(document.documentId != PlaylistDocument::createNew().documentId);
        QVERIFY(isValidItemSettings(PlaylistItemSettings{}));

        PlaylistItem item;
        item.settings.outPointMs = 1500;
        item.settings.repeatEndMode = PlaylistRepeatEndMode::goto_;
        document.items.append(item);
        QCOMPARE(QVariant::fromValue(document).value<PlaylistDocument>(), document);
        QVERIFY(QMetaType::fromName("tarnix::PlaylistItemSettings").isValid());
        QCOMPARE(QMetaEnum::fromType<PlaylistEndMode>().keyToValue("goto_"), 4);
        QCOMPARE(QMetaEnum::fromType<PlaylistRepeatEndMode>().keyToValue("goto_"), 3);
        QCOMPARE(QVariant::fromValue(PlaylistBulkOperation::Delete).value<PlaylistBulkOperation>(),
                 PlaylistBulkOperation::Delete);
    }

    void fadeDurations_data()
    {
        QTest::addColumn<qint64>("durationMs");
        QTest::addColumn<bool>("valid");
        QTest::newRow("0") << qint64(0) << false;
        QTest::newRow("99") << qint64(99) << false;
        QTest::newRow("100") << qint64(100) << true;
        QTest::newRow("60000") << qint64(60000) << true;
        QTest::newRow("60001") << qint64(60001) << false;
    }
    void fadeDurations()
    {
        QFETCH(qint64, durationMs);
        QFETCH(bool, valid);
        // A disabled fade keeps its length, which must still be a legal one.
        for (auto fade : {&PlaylistItemSettings::fadeIn, &PlaylistItemSettings::fadeOut,
                          &PlaylistItemSettings::endCrossfade}) {
            for (bool enabled : {false, true}) {
                PlaylistItemSettings settings;
                settings.*fade = PlaylistFadeSetting{enabled, durationMs};
                QVERIFY2(isValidItemSettings(settings) == valid, enabled ? "enabled" : "disabled");
            }
        }
    }

    void settingsRanges_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<qint64>("value");
        QTest::addColumn<bool>("valid");
        const QList<std::tuple<const char *, qint64, qint64>> ranges = {
            {"repeatCount", 0, 9999}, {"volume", -960, 60}, {"delay", 0, 6},
            {"eqLow", -150, 150}, {"eqMid", -150, 150}, {"eqHigh", -150, 150},
            {"repeatEndMode", 0, 3}, {"inPointMs", 0, 3600000},
        };
        for (const auto &[field, low, high] : ranges) {
            QTest::addRow("%s %lld", field, low - 1) << QString(field) << low - 1 << false;
            QTest::addRow("%s %lld", field, low) << QString(field) << low << true;
            QTest::addRow("%s %lld", field, high) << QString(field) << high << true;
            if (field != QLatin1String("inPointMs"))
                QTest::addRow("%s %lld", field, high + 1) << QString(field) << high + 1 << false;
        }
        // Modes other than repeatEndMode are checked where they are parsed.
        QTest::newRow("endless repeat") << "endMode" << qint64(PlaylistEndMode::repeat) << true;
        QTest::newRow("out equals in") << "outPointMs" << qint64(0) << false;
        QTest::newRow("out after in") << "outPointMs" << qint64(1) << true;
    }
    void settingsRanges()
    {
        QFETCH(QString, field);
        QFETCH(qint64, value);
        QFETCH(bool, valid);
        PlaylistItemSettings s;
        const auto v = static_cast<qint32>(value);
        if (field == u"inPointMs") s.inPointMs = value;  // no out point: valid at every in point
        else if (field == u"outPointMs") s.outPointMs = value;
        else if (field == u"repeatCount") s.repeatCount = v;
        else if (field == u"repeatEndMode") s.repeatEndMode = static_cast<PlaylistRepeatEndMode>(v);
        else if (field == u"endMode") s.endMode = static_cast<PlaylistEndMode>(v);
        else if (field == u"volume") s.nominalVolumeTenthsDb = v;
        else if (field == u"delay") s.nominalAudioDelayFrames = v;
        else if (field == u"eqLow") s.nominalEqLowTenthsDb = v;
        else if (field == u"eqMid") s.nominalEqMidTenthsDb = v;
        else if (field == u"eqHigh") s.nominalEqHighTenthsDb = v;
        QCOMPARE(isValidItemSettings(s), valid);
    }

    void powerPointMode_data()
    {
        QTest::addColumn<PlaylistPowerPointMode>("mode");
        QTest::addColumn<PlaylistSourceType>("source");
        QTest::addColumn<PlaylistMediaType>("media");
        QTest::addColumn<bool>("valid");
        using M = PlaylistPowerPointMode;
        using S = PlaylistSourceType;
        using T = PlaylistMediaType;
        QTest::newRow("none pdf/pdf") << M::none << S::pdf << T::pdf << true;
        QTest::newRow("none file/pdf") << M::none << S::file << T::pdf << false;
        QTest::newRow("none pdf/stillImage") << M::none << S::pdf << T::stillImage << false;
        QTest::newRow("none uvc/audio") << M::none << S::uvc << T::audio << true;
        QTest::newRow("native powerpoint/presentation") << M::native << S::powerpoint << T::presentation << true;
        QTest::newRow("native file/presentation") << M::native << S::file << T::presentation << false;
        QTest::newRow("video file/video") << M::video << S::file << T::video << true;
        QTest::newRow("video powerpoint/video") << M::video << S::powerpoint << T::video << false;
        QTest::newRow("pngSequence file/stillImage") << M::pngSequence << S::file << T::stillImage << true;
        QTest::newRow("pngSequence file/video") << M::pngSequence << S::file << T::video << false;
        QTest::newRow("mode 4") << static_cast<M>(4) << S::file << T::video << false;
    }
    void powerPointMode()
    {
        QFETCH(PlaylistPowerPointMode, mode);
        QFETCH(PlaylistSourceType, source);
        QFETCH(PlaylistMediaType, media);
        QFETCH(bool, valid);
        QCOMPARE(isValidPowerPointMode(mode, source, media), valid);
    }

    void liveAudioRoundTrip_data()
    {
        QTest::addColumn<QString>("deviceId");
        QTest::newRow("one byte, would pad twice") << "a";
        QTest::newRow("two bytes, would pad once") << "ab";
        QTest::newRow("endpoint id") << "{0.0.1.00000000}.{6f1c2a3e-90b4-4c77-8d1e-2b5a9f0c7e11}";
        QTest::newRow("japanese") << QString::fromUtf8("マイク入力 (USB)");
        QTest::newRow("encodes to - and _") << "~~?~~~";
    }
    void liveAudioRoundTrip()
    {
        QFETCH(QString, deviceId);
        const QString uri = liveAudioUri(deviceId);
        static const QRegularExpression canonical("^live-audio://[A-Za-z0-9_-]+$");
        QVERIFY2(canonical.match(uri).hasMatch(), qPrintable(uri));
        QVERIFY(isLiveAudioUri(uri) && !isNetworkVideoUri(uri));
        QCOMPARE(liveAudioDeviceId(uri), deviceId);
    }

    void liveAudioRefusals_data()
    {
        QTest::addColumn<QString>("uri");
        QTest::newRow("empty id") << "live-audio://";
        QTest::newRow("padded") << "live-audio://YQ==";
        QTest::newRow("standard alphabet") << "live-audio://YW+j";
        QTest::newRow("foreign character") << "live-audio://YW*j";
        QTest::newRow("non-zero spare bits") << "live-audio://YR";  // decodes to "a", canonical "YQ"
        QTest::newRow("not utf-8") << "live-audio://_w";           // the single byte 0xff
        QTest::newRow("scheme case") << "LIVE-AUDIO://YWJj";
    }
    void liveAudioRefusals()
    {
        QFETCH(QString, uri);
        QCOMPARE(liveAudioDeviceId(uri), QString());
    }

    void addableItem_data()
    {
        QTest::addColumn<PlaylistSourceType>("source");
        QTest::addColumn<QString>("path");  // "@file", "@dir", "@missing": entries of the temporary folder
        QTest::addColumn<QString>("name");
        QTest::addColumn<PlaylistMediaType>("media");
        QTest::addColumn<qint64>("inPointMs");
        QTest::addColumn<qint64>("outPointMs");  // -1: none
        QTest::addColumn<bool>("addable");
        using S = PlaylistSourceType;
        using T = PlaylistMediaType;
        const QString mic = liveAudioUri("mic-1");
        auto row = [](const char *rowName, S s, const QString &path, const char *name, T t, qint64 in,
                      qint64 out, bool addable) {
            QTest::newRow(rowName) << s << path << QString(name) << t << in << out << addable;
        };
        row("file exists", S::file, "@file", "", T::video, 0, -1, true);
        row("file is a folder", S::file, "@dir", "clip", T::video, 0, -1, false);
        row("file missing", S::file, "@missing", "clip", T::video, 0, -1, false);
        row("pdf folder", S::pdf, "@dir", "", T::pdf, 0, -1, false);
        row("camera", S::uvc, "/dev/video0", "Camera", T::video, 0, -1, true);
        row("camera without name", S::uvc, "/dev/video0", "", T::video, 0, -1, false);
        row("camera without path", S::uvc, "", "Camera", T::video, 0, -1, false);
        row("decklink", S::uvc, "decklink://-1/0/2/3", "DeckLink", T::video, 0, -1, true);
        row("live audio", S::uvc, mic, "Mic", T::audio, 0, -1, true);
        row("live audio as video", S::uvc, mic, "Mic", T::video, 0, -1, false);
        row("live audio with in point", S::uvc, mic, "Mic", T::audio, 10, -1, false);
        row("live audio with out point", S::uvc, mic, "Mic", T::audio, 0, 5000, false);
        row("live audio without name", S::uvc, mic, "", T::audio, 0, -1, false);
        row("live audio padded", S::uvc, mic + "==", "Mic", T::audio, 0, -1, false);
    }
    void addableItem()
    {
        QFETCH(PlaylistSourceType, source);
        QFETCH(QString, path);
        QFETCH(QString, name);
        QFETCH(PlaylistMediaType, media);
        QFETCH(qint64, inPointMs);
        QFETCH(qint64, outPointMs);
        QFETCH(bool, addable);
        if (path.startsWith('@'))
            path = tempDir.filePath(path == u"@file" ? "clip.mp4" : path == u"@dir" ? "folder" : "gone.mp4");
        PlaylistItem item;
        item.sourceType = source;
        item.filePath = path;
        item.displayName = name;
        item.mediaType = media;
        item.settings.inPointMs = inPointMs;
        if (outPointMs >= 0)
            item.settings.outPointMs = outPointMs;
        QCOMPARE(isAddableItem(item), addable);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistRecords)
#include "tst_playlist_records.moc"
