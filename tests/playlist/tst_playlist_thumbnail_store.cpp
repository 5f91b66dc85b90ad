// The store of playlist pictures over a real model, with a renderer the test
// controls: when it asks, what it keeps, and which answers it drops.

#include "kit/item_request.h"
#include "playlist/media_thumbnailer.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_thumbnail_store.h"
#include "playlist/playlist_validation.h"

#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <mutex>

using namespace tarnix;
using testkit::ItemRequest;

namespace {

// Answers at once with a picture and the file's name as its codec, so the
// test can tell which request an answer came from; remembers every request.
struct RecordingRenderer {
    struct Asked {
        quint64 itemId = 0;
        QString file;
        bool albumArt = false;
    };
    std::mutex mutex;
    QList<Asked> asked;

    MediaThumbnailer::Renderer function()
    {
        return [this](const PendingThumbnail &request) {
            {
                std::lock_guard lock(mutex);
                asked.append({request.itemId, QFileInfo(request.path).fileName(), request.preferAlbumArt});
            }
            MediaThumbnailResult result;
            result.success = true;
            result.image = QImage(request.size, QImage::Format_RGB32);
            result.image.fill(Qt::darkCyan);
            result.videoCodec = QFileInfo(request.path).fileName();
            return result;
        };
    }
    QList<Asked> requests()
    {
        std::lock_guard lock(mutex);
        return asked;
    }
};

struct StoreFixture {
    RecordingRenderer renderer;
    PlaylistModel model;
    MediaThumbnailer thumbnailer{options(renderer)};
    PlaylistThumbnailStore store{&model, &thumbnailer};

    static MediaThumbnailer::Options options(RecordingRenderer &renderer)
    {
        MediaThumbnailer::Options o;
        o.render = renderer.function();
        o.maxThreads = 1;  // answers in the order asked
        return o;
    }
    quint64 add(const PlaylistItemRequest &request) { return model.addItems({request}).value(0); }
    // Lets every answer asked for so far reach the store.
    bool settle()
    {
        return QTest::qWaitFor([this] { return thumbnailer.pendingCount() == 0; }, 5000);
    }
};

} // namespace

class TestPlaylistThumbnailStore : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString file(const QString &name) { return testkit::touchFile(m_dir.filePath(name)); }

private slots:
    // Asked once, on first need, and kept; items that cannot be pictured yet
    // (offline, pending analysis, a camera whose session pictures it) are
    // not asked for; a live-audio input gets its card at once.
    void asksOnceAndKeeps()
    {
        StoreFixture f;
        QSignalSpy changed(&f.store, &PlaylistThumbnailStore::thumbnailChanged);
        const quint64 clip = f.add(ItemRequest(file("clip.mp4")));
        QVERIFY(f.store.thumbnail(clip).isNull());
        QVERIFY(f.store.isWaiting(clip));
        QVERIFY(f.store.thumbnail(clip).isNull());
        QVERIFY(f.settle());
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.at(0).at(0).toULongLong(), clip);
        QCOMPARE(f.store.thumbnail(clip).size(), QSize(240, 136));
        QCOMPARE(f.store.details(clip)->videoCodec, QStringLiteral("clip.mp4"));
        QCOMPARE(f.renderer.requests().size(), 1);

        const QString gonePath = file("gone.mp4");
        const quint64 offline = f.add(ItemRequest(gonePath));
        f.model.markFileUnavailable(gonePath);
        QVERIFY(f.model.isOffline(offline));
        const quint64 pending = f.model.addDocumentItem(file("new.mp4"), 1, PlaylistSourceType::file);
        const quint64 camera = f.add(ItemRequest(QStringLiteral("/dev/video0")).source(PlaylistSourceType::uvc));
        const quint64 live = f.add(ItemRequest(liveAudioUri(QStringLiteral("mic")))
                                       .source(PlaylistSourceType::uvc)
                                       .type(PlaylistMediaType::audio));
        QVERIFY(offline && pending && camera && live);
        QVERIFY(f.store.thumbnail(offline).isNull());
        QVERIFY(f.store.thumbnail(pending).isNull());
        QVERIFY(f.store.thumbnail(camera).isNull());
        const QImage liveCard = f.store.thumbnail(live);
        QCOMPARE(liveCard.size(), QSize(240, 136));
        QCOMPARE(liveCard.pixel(2, 2), qRgb(0x11, 0x1a, 0x13));
        QVERIFY(f.settle());
        QCOMPARE(f.renderer.requests().size(), 1);
    }

    // An answer for an item removed or replaced after it was asked for is
    // dropped, even when the replaced item is already waiting for its new
    // picture; a new document forgets everything.
    void dropsAnswersForGoneOrChangedItems()
    {
        StoreFixture f;
        QSignalSpy changed(&f.store, &PlaylistThumbnailStore::thumbnailChanged);
        const quint64 removed = f.add(ItemRequest(file("a.mp4")));
        const quint64 replaced = f.add(ItemRequest(file("b.mp4")));
        f.store.thumbnail(removed);
        f.store.thumbnail(replaced);
        QVERIFY(f.model.removeItem(removed));
        QVERIFY(f.model.replacePendingItem(replaced, {ItemRequest(file("c.mp4"))}));
        QCOMPARE(changed.size(), 1);  // the replaced item's old picture is void
        QVERIFY(f.store.thumbnail(replaced).isNull());
        QVERIFY(f.settle());  // one worker: the old answers come first
        QVERIFY(!f.store.details(removed));
        QCOMPARE(f.store.details(replaced)->videoCodec, QStringLiteral("c.mp4"));
        QCOMPARE(changed.size(), 2);

        QVERIFY(f.model.replaceDocument(PlaylistDocument::createNew()));
        QVERIFY(!f.store.details(replaced));
    }

    // The cover preference makes every audio picture anew, with the
    // preference passed on, and leaves the others alone.
    void albumArtPreferenceRemakesAudio()
    {
        StoreFixture f;
        const quint64 song = f.add(ItemRequest(file("song.mp3")).type(PlaylistMediaType::audio));
        const quint64 clip = f.add(ItemRequest(file("clip.mp4")));
        f.store.thumbnail(song);
        f.store.thumbnail(clip);
        QVERIFY(f.settle());
        QSignalSpy changed(&f.store, &PlaylistThumbnailStore::thumbnailChanged);
        f.store.audioThumbnailPreferenceChanged(true);
        QVERIFY(f.store.prefersAudioAlbumArt());
        QVERIFY(f.settle());
        const auto asked = f.renderer.requests();
        QCOMPARE(asked.size(), 3);
        QCOMPARE(asked.at(2).itemId, song);
        QVERIFY(asked.at(2).albumArt);
        QVERIFY(!asked.at(0).albumArt && !asked.at(1).albumArt);
        QCOMPARE(changed.size(), 2);  // made void, then the new picture
        QVERIFY(!f.store.thumbnail(song).isNull());
        f.store.audioThumbnailPreferenceChanged(true);
        QCOMPARE(f.renderer.requests().size(), 3);
    }
};

QTEST_MAIN(TestPlaylistThumbnailStore)
#include "tst_playlist_thumbnail_store.moc"
