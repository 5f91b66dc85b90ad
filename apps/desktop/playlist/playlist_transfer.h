#pragma once

#include "shell/localized_text.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

namespace tarnix {

class BackgroundIoQueue;
class PlaylistModel;
class UserInfoCenter;

// How a transfer ended, as the operator is told and automation answered.
struct PlaylistTransferOutcome {
    bool success = false;
    LocalizedText message;  // the operator's message
    QString detail;         // the reader's, writer's or model's own words, if any

    // What an automation client gets for a failure: the detail when there
    // is one, since it says what was wrong, otherwise the message.
    QString errorText() const;
};

// Export and import of all playlists, and the previous session: the file
// work runs on the background I/O queue, the document is taken from and
// handed to the model on the main thread, under the model's rules (a
// replacement is refused whole while anything is referenced for playout).
// Every outcome is posted to the operator from "PLAYLIST" and handed to the
// caller's completion, exactly once.
//
// Main thread only.
class PlaylistTransfer : public QObject
{
    Q_OBJECT

public:
    using Completion = std::function<void(const PlaylistTransferOutcome &outcome)>;

    // `previousSessionPath` empty: previousSessionFilePath().
    PlaylistTransfer(PlaylistModel *model, BackgroundIoQueue *queue, UserInfoCenter *userInfo,
                     QString previousSessionPath = {}, QObject *parent = nullptr);
    ~PlaylistTransfer() override;

    // Writes a snapshot of every playlist to the path (".json" added when it
    // has no suffix).
    void exportPlaylists(const QString &path, Completion done = {});
    // Reads the file and replaces the document with it.
    void importPlaylists(const QString &path, Completion done = {});
    // Refused at once while the program, DSK or BGM plays; otherwise reads
    // the previous session and replaces the document with it.
    void restorePreviousSession(Completion done = {});
    // The end of the run: writes the snapshot as the previous session. The
    // caller waits for the queue to be idle.
    void savePreviousSession(Completion done = {});

    // From here on, reads still in flight are cancelled and their documents
    // dropped unapplied, and new exports, imports and restores are refused.
    void close();
    bool isClosed() const;

    QString previousSessionPath() const;

    // Whether the program, DSK or BGM holds an item.
    static bool playoutActive(const PlaylistModel &model);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
