#include "playlist_document_fixture.h"

#include "playlist/macro_json.h"
#include "playlist/playlist_document.h"
#include "playlist/playlist_document_check.h"
#include "playlist/playlist_document_io.h"
#include "playlist/playlist_json_writer.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace tarnix;
using namespace playlist_fixture;

namespace {

const QString kItem = QStringLiteral("playlists/0/items/0");
const QString kSettings = kItem + QStringLiteral("/settings");

QByteArray json(const QJsonObject &root)
{
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

// What an import decides about some bytes: the reader's message, then the
// validation's; empty when the document is accepted.
QString importVerdict(const QByteArray &bytes)
{
    QString error = QStringLiteral("not cleared");
    const auto document = parsePlaylistDocument(bytes, &error);
    if (!document)
        return error.isEmpty() ? QStringLiteral("failed without a message") : error;
    if (!error.isEmpty())
        return QStringLiteral("succeeded without clearing the error");
    if (!validatePlaylistDocument(*document, &error))
        return error;
    return {};
}

QJsonObject withPlaylists(int count)
{
    QJsonArray playlists;
    for (int n = 1; n <= count; ++n)
        playlists.append(QJsonObject{{"number", n}, {"name", ""}, {"items", QJsonArray{}}});
    return with(document(), "playlists", playlists);
}

// `count` items in all, split over two playlists so the surplus stands in
// the last one.
QJsonObject withItems(int count)
{
    QJsonArray first, second;
    for (int n = 1; n <= count; ++n)
        (n <= count / 2 ? first : second).append(item(QString::number(n), "/m/" + QString::number(n)));
    QJsonObject root = with(document(), "playlists/0/items", first);
    return with(root, "playlists/1/items", second);
}

QByteArray padded(const QJsonObject &root, qsizetype size)
{
    QByteArray bytes = json(root);
    bytes.append(QByteArray(size - bytes.size(), ' '));
    return bytes;
}

} // namespace

class TestPlaylistDocument : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

private slots:
    void refusalsAndBoundaries_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        const QJsonObject d = document();
        auto row = [](const char *name, const QJsonObject &root, const QString &message) {
            QTest::newRow(name) << json(root) << message;
        };
        const QString big(4096, u'x');

        row("template", d, "");
        // size
        QTest::newRow("exactly the byte limit") << padded(d, 16777216) << "";
        QTest::newRow("one byte over") << padded(d, 16777217) << "Playlist JSON exceeds 16777216 bytes.";
        QTest::newRow("root array") << QByteArray("[]") << "The playlist document root must be an object.";
        // budgets
        row("values", with(d, "padding", QJsonArray::fromVariantList(QVariantList(500000, 0))),
            "Playlist JSON exceeds 500000 values.");
        row("string at the limit", with(d, kItem + "/displayName", big), "");
        row("string over", with(d, kItem + "/displayName", big + "x"),
            "Playlist JSON string exceeds 4096 characters.");
        row("key over", with(d, big + "k", 1), "Playlist JSON string exceeds 4096 characters.");
        row("strings in total", with(d, "padding", QJsonArray::fromStringList(QStringList(2048, big))),
            "Playlist JSON strings exceed 8388608 characters in total.");
        // format and version
        row("format", with(d, "format", "tarnix-playlists"), "This is not a TARNIX playlist document.");
        row("no format", without(d, "format"), "This is not a TARNIX playlist document.");
        row("version 2", with(d, "version", 2), "Playlist document version 2 is not supported.");
        row("version 0", with(d, "version", 0), "root.version is outside the supported integer range.");
        row("version 1.5", with(d, "version", 1.5), "root.version is outside the supported integer range.");
        row("version text", with(d, "version", "1"), "root.version must be an integer.");
        // ids
        for (const char *text : {"007", "+7", " 7", "0", "seven", "18446744073709551616"})
            row(qPrintable(QStringLiteral("nextItemId '%1'").arg(text)), with(d, "nextItemId", text),
                "root.nextItemId must be a positive integer ID string.");
        row("nextItemId number", with(d, "nextItemId", 7), "root.nextItemId must be a string.");
        row("documentId", with(d, "documentId", "not-a-uuid"), "root.documentId must be a UUID.");
        row("item id 007 is 7", with(d, kItem + "/id", "007"), "");
        row("item id 0", with(d, kItem + "/id", "0"), "root.playlists[0].items[0].id must be a positive integer string.");
        row("item id text", with(d, kItem + "/id", "one"), "root.playlists[0].items[0].id must be a positive integer string.");
        row("item id number", with(d, kItem + "/id", 1), "root.playlists[0].items[0].id must be a string.");
        row("item id by value", with(d, "playlists/0/items/1/id", "01"), "Playlist item ID 1 is duplicated.");
        row("id across playlists",
            with(d, "playlists/1/items", QJsonArray{item("2", "/m/x")}), "Playlist item ID 2 is duplicated.");
        row("exhausted id range", with(d, kItem + "/id", "18446744073709551615"),
            "The playlist item ID range is exhausted.");
        // macros
        row("macros null", with(d, "macros", QJsonValue()), "macros must be an array.");
        row("macros absent", without(d, "macros"), "");
        row("macro version", with(d, "macros/0/version", 2), "Invalid or unsupported macro document format.");
        row("macro step", with(d, "macros/0/steps/0/type", "jump"), "Invalid macro step 1 in Show.");
        row("macro step id", with(d, "macros/0/steps/0/id", "x"), "Macro Show, step 1: Invalid or duplicate step ID.");
        // root numbers
        row("crossfade 99", with(d, "manualCrossfadeDurationMs", 99),
            "root.manualCrossfadeDurationMs is outside the supported integer range.");
        row("crossfade 60000", with(d, "manualCrossfadeDurationMs", 60000), "");
        row("no active playlist", without(d, "activePlaylistNumber"), "root.activePlaylistNumber must be an integer.");
        row("missing active playlist", with(d, "activePlaylistNumber", 3), "The active playlist number does not exist.");
        // playlists
        row("playlists object", with(d, "playlists", QJsonObject{}), "root.playlists must be an array.");
        row("no playlists", with(d, "playlists", QJsonArray{}), "The playlist document contains no playlists.");
        row("128 playlists", withPlaylists(128), "");
        row("129 playlists", withPlaylists(129), "Playlist document exceeds 128 playlists.");
        row("playlist not object", with(d, "playlists/1", 5), "root.playlists[1] must be an object.");
        row("playlist number 0", with(d, "playlists/1/number", 0),
            "root.playlists[1].number is outside the supported integer range.");
        row("playlist number twice", with(d, "playlists/1/number", 1), "Playlist number 1 is duplicated.");
        row("playlist name", without(d, "playlists/1/name"), "root.playlists[1].name must be a string.");
        row("playlist mode text", with(d, "playlists/1/mode", "BGM"), "root.playlists[1].mode is not supported.");
        row("playlist mode number", with(d, "playlists/1/mode", 1), "root.playlists[1].mode is not supported.");
        row("playlist crossfade flag", with(d, "playlists/1/manualCrossfadeEnabled", "yes"),
            "root.playlists[1].manualCrossfadeEnabled must be true or false.");
        row("playlist items", without(d, "playlists/1/items"), "root.playlists[1].items must be an array.");
        // items
        row("10000 items", withItems(10000), "");
        row("10001 items", withItems(10001), "Playlist document exceeds 10000 items.");
        row("item not object", with(d, kItem, "x"), "root.playlists[0].items[0] must be an object.");
        row("file path", without(d, kItem + "/filePath"), "root.playlists[0].items[0].filePath must be a string.");
        row("source type missing", without(d, kItem + "/sourceType"), "root.playlists[0].items[0].sourceType must be a string.");
        row("source type", with(d, kItem + "/sourceType", "camera"), "root.playlists[0].items[0].sourceType is not supported.");
        row("media type", with(d, kItem + "/mediaType", "Video"), "root.playlists[0].items[0].mediaType is not supported.");
        row("powerpoint mode", with(d, kItem + "/powerPointMode", "slides"),
            "root.playlists[0].items[0].powerPointMode is not supported.");
        row("powerpoint default native",
            with(with(d, kItem + "/sourceType", "powerpoint"), kItem + "/mediaType", "presentation"), "");
        row("powerpoint combination", with(d, kItem + "/sourceType", "pdf"),
            "root.playlists[0].items[0].powerPointMode does not match its source and media types.");
        row("color", with(d, kItem + "/color", "purple"), "root.playlists[0].items[0].color is not supported.");
        row("separator", with(d, kItem + "/separatorBelow", 1),
            "root.playlists[0].items[0].separatorBelow must be true or false.");
        // settings
        const QString s = "root.playlists[0].items[0].settings";
        row("settings", with(d, kSettings, QJsonArray{}), s + " must be an object.");
        row("in point", with(d, kSettings + "/inPointMs", -1), s + ".inPointMs is outside the supported integer range.");
        row("out point missing", without(d, kSettings + "/outPointMs"), s + ".outPointMs must be an integer.");
        row("out equal to in", with(with(d, kSettings + "/inPointMs", 500), kSettings + "/outPointMs", 500),
            "Item ID 1 contains invalid settings.");
        row("start mode", with(d, kSettings + "/startMode", "go"), s + ".startMode is not supported.");
        row("end mode missing", without(d, kSettings + "/endMode"), s + ".endMode must be a string.");
        row("fade object", with(d, kSettings + "/fadeOut", true), s + ".fadeOut must be an object.");
        row("fade flag", with(d, kSettings + "/fadeIn/enabled", "on"), s + ".fadeIn.enabled must be true or false.");
        row("fade 50", with(d, kSettings + "/fadeIn/durationMs", 50), "Item ID 1 contains invalid settings.");
        row("fade 100", with(d, kSettings + "/fadeIn/durationMs", 100), "");
        row("goto 0", with(d, kSettings + "/gotoTargetItemId", "0"),
            s + ".gotoTargetItemId must be a positive integer string or null.");
        row("goto number", with(d, kSettings + "/gotoTargetItemId", 2),
            s + ".gotoTargetItemId must be a positive integer string or null.");
        row("goto 002", with(d, kSettings + "/gotoTargetItemId", "002"), "");
        row("goto missing target", with(d, kSettings + "/gotoTargetItemId", "99"),
            "Item ID 1 refers to missing GOTO target 99.");
        row("repeat alone", without(d, kSettings + "/repeatEndMode"),
            s + ".repeatCount and " + s + ".repeatEndMode must be provided together.");
        row("repeat count 0", with(d, kSettings + "/repeatCount", 0),
            s + ".repeatCount is outside the supported integer range.");
        row("repeat end mode", with(d, kSettings + "/repeatEndMode", "repeat"), s + ".repeatEndMode is not supported.");
        row("eq", with(d, kSettings + "/nominalEqMidTenthsDb", 151), s + ".nominalEqMidTenthsDb is outside the supported integer range.");
        row("delay", with(d, kSettings + "/nominalAudioDelayFrames", 7),
            s + ".nominalAudioDelayFrames is outside the supported integer range.");
        row("volume", without(d, kSettings + "/nominalVolumeTenthsDb"), s + ".nominalVolumeTenthsDb must be an integer.");
        row("volume over the model's range", with(d, kSettings + "/nominalVolumeTenthsDb", 61),
            "Item ID 1 contains invalid settings.");
        row("unknown keys", with(with(d, "extra", 1), kSettings + "/extra", QJsonObject{}), "");
    }
    void refusalsAndBoundaries()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        QCOMPARE(importVerdict(bytes), message);
    }

    void invalidJsonNamesOffset()
    {
        QString error;
        QVERIFY(!parsePlaylistDocument("{\"format\": }", &error));
        QVERIFY2(error.startsWith("Invalid JSON at offset 12: "), qPrintable(error));
    }

    void nextItemIdIsRaised()
    {
        QJsonObject d = with(document(), "nextItemId", "1");
        d = with(d, kItem + "/id", "500");
        auto document = parsePlaylistDocument(json(d));
        QVERIFY(document);
        QCOMPARE(document->nextItemId, 501u);

        // A step of another document names ids of that document, not ours.
        d = with(d, "macros/0/steps/0/itemId", "900");
        QCOMPARE(parsePlaylistDocument(json(d))->nextItemId, 901u);
        d = with(d, "macros/0/steps/0/documentId", "{11111111-2222-3333-4444-555555555555}");
        QCOMPARE(parsePlaylistDocument(json(d))->nextItemId, 501u);
    }

    void exportName()
    {
        const QDateTime at(QDate(2026, 3, 4), QTime(5, 6, 7));
        QCOMPARE(playlistExportFileName(at), "tarnix-export-20260304-050607.json");
        QCOMPARE(withPlaylistFileSuffix("/tmp/show"), "/tmp/show.json");
        QCOMPARE(withPlaylistFileSuffix("/tmp/show.txt"), "/tmp/show.txt");
    }

    void cancelledReadReportsCancel()
    {
        auto flag = std::make_shared<std::atomic<bool>>(true);
        QString error;
        QVERIFY(!parsePlaylistDocument(json(document()), &error, flag));
        QCOMPARE(error, "Playlist import was cancelled.");
    }

    // A document holding every field, every enum value and every step type
    // survives the writer and the reader unchanged, and the second save is
    // byte for byte the first.
    void roundTrip()
    {
        PlaylistDocument d = PlaylistDocument::createNew();
        d.playlists = {Playlist{3, "Opening", PlaylistMode::standard, true},
                       Playlist{1, "Music", PlaylistMode::bgm, false}};
        d.activePlaylistNumber = 1;
        d.manualCrossfadeDurationMs = 2500;
        auto add = [&](PlaylistSourceType source, PlaylistMediaType media,
                       PlaylistPowerPointMode mode = PlaylistPowerPointMode::none) {
            PlaylistItem item;
            item.sourceType = source;
            item.mediaType = media;
            item.powerPointMode = mode;
            item.id = d.items.size() + 10;
            item.playlistNumber = item.id % 2 ? 1 : 3;
            item.position = 1;
            for (const PlaylistItem &other : d.items)
                item.position += other.playlistNumber == item.playlistNumber;
            item.filePath = "/media/" + QString::number(item.id);
            item.displayName = QStringLiteral("項目 ") + QString::number(item.id);
            d.items.append(item);
        };
        const QList<std::pair<PlaylistSourceType, PlaylistMediaType>> kinds = {
            {PlaylistSourceType::file, PlaylistMediaType::unknown}, {PlaylistSourceType::file, PlaylistMediaType::video},
            {PlaylistSourceType::file, PlaylistMediaType::audio}, {PlaylistSourceType::file, PlaylistMediaType::stillImage},
            {PlaylistSourceType::uvc, PlaylistMediaType::video}, {PlaylistSourceType::powerpoint, PlaylistMediaType::presentation},
            {PlaylistSourceType::pdf, PlaylistMediaType::pdf}};
        for (const auto &[source, media] : kinds)
            add(source, media);
        add(PlaylistSourceType::file, PlaylistMediaType::video, PlaylistPowerPointMode::video);
        add(PlaylistSourceType::file, PlaylistMediaType::stillImage, PlaylistPowerPointMode::pngSequence);
        for (int i = 0; i < d.items.size(); ++i) {
            PlaylistItem &item = d.items[i];
            if (item.sourceType == PlaylistSourceType::powerpoint)
                item.powerPointMode = PlaylistPowerPointMode::native;
            item.color = static_cast<PlaylistItemColor>(i % 5);
            item.separatorBelow = i % 2;
            PlaylistItemSettings &s = item.settings;
            s.inPointMs = i * 1000;
            if (i % 2)
                s.outPointMs = 9007199254740991;
            s.startMode = static_cast<PlaylistStartMode>(i % 2);
            s.endMode = static_cast<PlaylistEndMode>(i % 5);
            s.repeatEndMode = static_cast<PlaylistRepeatEndMode>(i % 4);
            s.repeatCount = i % 3 ? 9999 : 0;
            s.gotoTargetItemId = i % 2 ? 10 : 0;
            s.fadeIn = {true, 100};
            s.fadeOut = {false, 60000};
            s.endCrossfade = {i % 2 == 0, 1234};
            s.nominalVolumeTenthsDb = -960 + i;
            s.nominalAudioDelayFrames = i % 7;
            s.nominalEqLowTenthsDb = -150;
            s.nominalEqMidTenthsDb = i;
            s.nominalEqHighTenthsDb = 150;
        }
        // The writer groups items by playlist in tab order.
        std::stable_sort(d.items.begin(), d.items.end(), [](const PlaylistItem &a, const PlaylistItem &b) {
            return a.playlistNumber > b.playlistNumber;
        });
        d.nextItemId = 100;
        MacroDefinition macro{QUuid::createUuid().toString(), QStringLiteral("朝の番組"), {}};
        for (int t = 0; t <= int(MacroStepType::note); ++t) {
            MacroStep step;
            step.type = static_cast<MacroStepType>(t);
            step.enabled = t % 2;
            step.itemId = 10 + t;
            step.documentId = d.documentId;
            step.label = "step " + QString::number(t);
            step.durationMs = 604800000;
            step.crossfade = true;
            step.requireReady = true;
            step.crossfadeDurationMs = 60000;
            step.operation = t == int(MacroStepType::transport) ? "offAir" : "playbackRate";
            step.value = t == int(MacroStepType::runtimeSetting) ? 1.25 : 0;
            macro.steps.append(step);
        }
        macro.steps[1].scheduledAt = QDateTime::fromString("2026-11-21T19:30:00.250+09:00", Qt::ISODateWithMs);
        macro.steps[2].scheduledAt = QDateTime::fromString("2026-11-21T10:30:00.000Z", Qt::ISODateWithMs);
        macro.steps[4].settingsPatch = QJsonObject{{"endMode", "goto"}, {"gotoTargetItemId", "11"},
                                                    {"fadeIn", fade(true, 200)}};
        d.macros = {macro};
        // Names that need every kind of escape, and a lone surrogate.
        d.items[0].displayName = QString("quote\" back\\ \b\f\n\r\t \x01 \x7f é 日 😀 ") + QChar(0xD800) + "x";
        QString error;
        QVERIFY2(validatePlaylistDocument(d, &error), qPrintable(error));

        const QByteArray first = serializePlaylistDocument(d);
        QCOMPARE(first, QJsonDocument(playlistDocumentObject(d)).toJson(QJsonDocument::Indented));
        const auto read = parsePlaylistDocument(first, &error);
        QVERIFY2(read, qPrintable(error));
        for (int i = 0; i < d.items.size(); ++i) {
            QCOMPARE(read->items[i].settings, d.items[i].settings);
            QCOMPARE(read->items[i], d.items[i]);
        }
        QCOMPARE(read->playlists, d.playlists);
        QVERIFY(read->macros == d.macros);
        QCOMPARE(read->macros[0].steps[1].scheduledAt.offsetFromUtc(), 9 * 3600);
        QCOMPARE(*read, d);

        const QString path = dir.filePath("show.json");
        QVERIFY(writePlaylistFile(path, *read, &error));
        const auto loaded = loadPlaylistFile(path, &error);
        QVERIFY2(loaded, qPrintable(error));
        QCOMPARE(serializePlaylistDocument(loaded->document), first);
        QCOMPARE(loaded->missingItems.size(), d.items.size() - 1);  // every file but the camera
    }

    void fileLimitsAndFailedSave()
    {
        const QString path = dir.filePath("limit.json");
        auto writeBytes = [&](const QByteArray &bytes) {
            QFile file(path);
            return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        };
        QString error;
        QVERIFY(writeBytes(padded(document(), 16777216)));
        QVERIFY2(readPlaylistFile(path, &error), qPrintable(error));
        QVERIFY(writeBytes(padded(document(), 16777217)));
        QVERIFY(!readPlaylistFile(path, &error));
        QCOMPARE(error, "Playlist file exceeds 16777216 bytes.");
        QVERIFY(!readPlaylistFile(dir.filePath("absent.json"), &error));
        QVERIFY(error.startsWith("Could not open the playlist file:\n"));

        // A save the reader would refuse writes nothing and keeps the old file.
        QVERIFY(writeBytes("old"));
        PlaylistDocument d = PlaylistDocument::createNew();
        d.playlists[0].name = QString(4097, u'n');
        QVERIFY(!writePlaylistFile(path, d, &error));
        QCOMPARE(error, "Playlist JSON string exceeds 4096 characters.");
        QVERIFY(!writePlaylistFile(dir.filePath("no/such/dir/x.json"), PlaylistDocument::createNew(), &error));
        QVERIFY(error.startsWith("Could not open the playlist file for writing:\n"));
        QFile old(path);
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), "old");
    }
};

QTEST_GUILESS_MAIN(TestPlaylistDocument)
#include "tst_playlist_document.moc"
