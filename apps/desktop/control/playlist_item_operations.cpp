#include "control/playlist_item_operations.h"

#include "control/controller_operations.h"
#include "playlist/playlist_model.h"

namespace tarnix {

using Ops = ControllerOperations;

QString playlistItemActionLabel(PlaylistItemAction action)
{
    switch (action) {
    case PlaylistItemAction::OnAir: return QStringLiteral("ON AIR");
    case PlaylistItemAction::Edit: return QStringLiteral("EDIT");
    case PlaylistItemAction::Dsk: return QStringLiteral("DSK");
    case PlaylistItemAction::Copy: return QStringLiteral("COPY");
    case PlaylistItemAction::CopyState: return QStringLiteral("Copy State");
    case PlaylistItemAction::PasteState: return QStringLiteral("Paste State");
    }
    return {};
}

PlaylistItemOperations::PlaylistItemOperations(PlaylistModel *model, ControllerOperations *operations,
                                               QObject *parent)
    : QObject(parent), m_model(model)
{
    if (operations)
        bind(operations);
}

void PlaylistItemOperations::bind(ControllerOperations *operations)
{
    // The model is the target where the change is the model's alone, so a
    // request after the model has gone is Unavailable rather than refused.
    PlaylistModel *model = m_model.data();
    if (!model)
        return;
    operations->bind<int>(Ops::ActivatePlaylist, model,
                          [model](int number) { return model->setActivePlaylist(number); });
    operations->bind<>(Ops::CreatePlaylist, model, [model] { return model->addPlaylist() != 0; });
    operations->bind<int, QString>(Ops::RenamePlaylist, model, [model](int number, const QString &name) {
        return model->setPlaylistName(number, name);
    });
    operations->bind<quint64, QString>(Ops::SetItemDisplayName, model, [model](quint64 id, const QString &name) {
        return model->setItemDisplayName(id, name);
    });
    operations->bind<quint64, PlaylistItemColor>(Ops::SetItemColor, model, [model](quint64 id, PlaylistItemColor c) {
        return model->setItemColor(id, c);
    });
    operations->bind<quint64, bool>(Ops::SetItemSeparatorBelow, model,
                                    [model](quint64 id, bool on) { return model->setItemSeparatorBelow(id, on); });
    operations->bindMember(Ops::SetItemStartMode, this, &PlaylistItemOperations::setItemStartMode);
    operations->bindMember(Ops::SetItemEndMode, this, &PlaylistItemOperations::setItemEndMode);
    operations->bindMember(Ops::SetItemFadeInEnabled, this, &PlaylistItemOperations::setItemFadeInEnabled);
    operations->bindMember(Ops::SetItemFadeOutEnabled, this, &PlaylistItemOperations::setItemFadeOutEnabled);
    operations->bindMember(Ops::SetItemEndCrossfadeEnabled, this,
                           &PlaylistItemOperations::setItemEndCrossfadeEnabled);
    operations->bindMember(Ops::CopyItemState, this, &PlaylistItemOperations::copyItemState);
    operations->bindMember(Ops::PasteItemState, this, &PlaylistItemOperations::pasteItemState);
}

template <typename Change>
bool PlaylistItemOperations::changeSettings(quint64 itemId, Change change)
{
    if (!m_model || m_model->isPending(itemId))
        return false;
    const std::optional<PlaylistItem> item = m_model->item(itemId);
    if (!item)
        return false;
    PlaylistItemSettings settings = item->settings;
    change(settings);
    return m_model->setItemSettings(itemId, settings);
}

bool PlaylistItemOperations::setItemStartMode(quint64 itemId, PlaylistStartMode mode)
{
    return changeSettings(itemId, [mode](PlaylistItemSettings &s) { s.startMode = mode; });
}

bool PlaylistItemOperations::setItemEndMode(quint64 itemId, PlaylistEndMode mode)
{
    if (mode == PlaylistEndMode::goto_)
        return false;
    return changeSettings(itemId, [mode](PlaylistItemSettings &s) { s.endMode = mode; });
}

bool PlaylistItemOperations::setItemFadeInEnabled(quint64 itemId, bool enabled)
{
    return changeSettings(itemId, [enabled](PlaylistItemSettings &s) { s.fadeIn.enabled = enabled; });
}

bool PlaylistItemOperations::setItemFadeOutEnabled(quint64 itemId, bool enabled)
{
    return changeSettings(itemId, [enabled](PlaylistItemSettings &s) { s.fadeOut.enabled = enabled; });
}

bool PlaylistItemOperations::setItemEndCrossfadeEnabled(quint64 itemId, bool enabled)
{
    return changeSettings(itemId, [enabled](PlaylistItemSettings &s) { s.endCrossfade.enabled = enabled; });
}

bool PlaylistItemOperations::copyItemState(quint64 itemId)
{
    if (!m_model)
        return false;
    if (m_model->isPending(itemId)) {
        emit actionBlocked(PlaylistItemAction::CopyState);
        return false;
    }
    const std::optional<PlaylistItem> item = m_model->item(itemId);
    if (!item)
        return false;
    const PlaylistItemSettings &s = item->settings;
    const bool wasHeld = m_held.has_value();
    m_held = HeldState{s.startMode, s.endMode, s.fadeIn.enabled, s.fadeOut.enabled, s.endCrossfade.enabled};
    if (!wasHeld)
        emit copiedStateChanged(true);
    return true;
}

bool PlaylistItemOperations::pasteItemState(quint64 itemId)
{
    if (!m_model)
        return false;
    if (m_model->isPending(itemId)) {
        emit actionBlocked(PlaylistItemAction::PasteState);
        return false;
    }
    if (!m_held)
        return false;
    const HeldState held = *m_held;
    return changeSettings(itemId, [&held](PlaylistItemSettings &s) {
        s.startMode = held.startMode;
        s.endMode = held.endMode;
        s.fadeIn.enabled = held.fadeIn;
        s.fadeOut.enabled = held.fadeOut;
        s.endCrossfade.enabled = held.endCrossfade;
    });
}

} // namespace tarnix
