#pragma once

#include "playlist/playlist_enums.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <optional>

namespace tarnix {

class ControllerOperations;
class PlaylistModel;

// What an operator asked of an item that is still being analysed or
// converted; the message names the action by its label.
enum class PlaylistItemAction : int { OnAir = 0, Edit, Dsk, Copy, CopyState, PasteState };

// "ON AIR", "EDIT", "DSK", "COPY", "Copy State", "Paste State".
QString playlistItemActionLabel(PlaylistItemAction action);

// Binds the item- and playlist-level operations that need nothing but the
// model: activating, creating and renaming playlists, an item's name,
// colour, separator, start and end modes and fades, and copying one item's
// modes and fades onto another. A keyboard, MIDI, macro or menu request
// takes the same path. Main thread.
class PlaylistItemOperations : public QObject
{
    Q_OBJECT

public:
    PlaylistItemOperations(PlaylistModel *model, ControllerOperations *operations, QObject *parent = nullptr);

    // Holds the item's start and end modes and its three fade switches,
    // replacing what was held. Refused for a pending or missing item.
    bool copyItemState(quint64 itemId);
    // Gives the item the held modes and switches; nothing else of its
    // settings changes. Refused while nothing is held, for a pending or
    // missing item, and where the model refuses the settings.
    bool pasteItemState(quint64 itemId);
    bool hasCopiedState() const { return m_held.has_value(); }

    bool setItemStartMode(quint64 itemId, PlaylistStartMode mode);
    // `goto` is refused: this path carries no target.
    bool setItemEndMode(quint64 itemId, PlaylistEndMode mode);
    bool setItemFadeInEnabled(quint64 itemId, bool enabled);
    bool setItemFadeOutEnabled(quint64 itemId, bool enabled);
    bool setItemEndCrossfadeEnabled(quint64 itemId, bool enabled);

signals:
    void actionBlocked(tarnix::PlaylistItemAction action);
    void copiedStateChanged(bool held);

private:
    struct HeldState {
        PlaylistStartMode startMode = PlaylistStartMode::pause;
        PlaylistEndMode endMode = PlaylistEndMode::pause;
        bool fadeIn = false;
        bool fadeOut = false;
        bool endCrossfade = false;
    };
    void bind(ControllerOperations *operations);
    // A copy of the item's settings changed by `change`, stored through the
    // model; a pending or missing item refuses.
    template <typename Change>
    bool changeSettings(quint64 itemId, Change change);

    QPointer<PlaylistModel> m_model;
    std::optional<HeldState> m_held;
};

} // namespace tarnix

Q_DECLARE_METATYPE(tarnix::PlaylistItemAction)
