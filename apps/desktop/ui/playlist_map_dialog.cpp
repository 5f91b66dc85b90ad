#include "ui/playlist_map_dialog.h"

#include "playlist/playlist_model.h"
#include "shell/localized_text.h"
#include "ui/ui_text.h"
#include "ui/playlist_item_texts.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tarnix {

namespace {

using ui::text;

QString endText(PlaylistEndMode mode)
{
    PlaylistItemSettings settings;
    settings.endMode = mode;
    return mode == PlaylistEndMode::repeat ? QStringLiteral("Repeat") : playlist_view::endModeText(settings, 0);
}

QString noteText(PlaylistRouteStop stop)
{
    switch (stop) {
    case PlaylistRouteStop::End: return {};
    case PlaylistRouteStop::StartPause: return LocalizedText(QStringLiteral("playlist.map.note.start_pause"), {}, playlistRouteNote(stop)).toString();
    case PlaylistRouteStop::DestinationPause:
        return LocalizedText(QStringLiteral("playlist.map.note.destination_pause"), {}, playlistRouteNote(stop)).toString();
    case PlaylistRouteStop::LiveOrUnknown: return LocalizedText(QStringLiteral("playlist.map.note.live_or_unknown"), {}, playlistRouteNote(stop)).toString();
    case PlaylistRouteStop::InfiniteRepeat:
        return LocalizedText(QStringLiteral("playlist.map.note.infinite_repeat"), {}, playlistRouteNote(stop)).toString();
    case PlaylistRouteStop::Loop: return LocalizedText(QStringLiteral("playlist.map.note.loop"), {}, playlistRouteNote(stop)).toString();
    case PlaylistRouteStop::DestinationUnavailable:
        return LocalizedText(QStringLiteral("playlist.map.note.destination_unavailable"), {}, playlistRouteNote(stop)).toString();
    case PlaylistRouteStop::DestinationBgm:
        return LocalizedText(QStringLiteral("playlist.map.note.destination_bgm"), {}, playlistRouteNote(stop)).toString();
    }
    return {};
}

} // namespace

PlaylistMapDialog::PlaylistMapDialog(PlaylistModel *model, QWidget *parent) : QDialog(parent), m_model(model)
{
    setObjectName(QStringLiteral("playlistMapDialog"));
    setWindowTitle(text("playlist.map.title", "Map"));
    auto *layout = new QVBoxLayout(this);
    m_table = new QTableWidget(0, 7, this);
    m_table->setObjectName(QStringLiteral("playlistMapTable"));
    m_table->setHorizontalHeaderLabels({
        text("playlist.map.column.sequence", "Play Sequence No."),
        text("playlist.map.column.playlist", "Playlist No."),
        text("playlist.map.column.item", "Item No."),
        text("playlist.map.column.name", "Item name"),
        text("playlist.map.column.start_mode", "Start Mode"),
        text("playlist.map.column.end_mode", "End Mode"),
        text("playlist.map.column.duration", "DUR"),
    });
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(3, QHeaderView::Stretch);
    layout->addWidget(m_table, 1);
    m_note = new QLabel(this);
    m_note->setObjectName(QStringLiteral("playlistMapNote"));
    m_note->setWordWrap(true);
    m_endpoint = new QLabel(this);
    m_endpoint->setObjectName(QStringLiteral("playlistMapEndpoint"));
    m_total = new QLabel(this);
    m_total->setObjectName(QStringLiteral("playlistMapTotal"));
    layout->addWidget(m_note);
    layout->addWidget(m_endpoint);
    layout->addWidget(m_total);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    // Qt's own words for its standard buttons are not in our catalogues.
    buttons->button(QDialogButtonBox::Close)->setText(ui::text("dialog.close", "Close"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(760, 420);
}

void PlaylistMapDialog::showRoute(quint64 itemId)
{
    if (!m_model)
        return;
    PlaylistRouteOptions options;
    if (itemId == m_model->onAirItemId()) {
        // From where the item on air is now, not from its in point.
        options.startPositionMs = m_model->lastPlayedPosition(itemId);
        options.repeatProgress = m_model->repeatProgress(itemId);
    }
    const PlaylistRoute route = m_model->route(itemId, options);
    m_table->setRowCount(int(route.rows.size()));
    for (int r = 0; r < route.rows.size(); ++r) {
        const PlaylistRouteRow &row = route.rows.at(r);
        const QStringList cells{
            QString::number(row.sequence),
            QString::number(row.playlistNumber),
            QString::number(row.row),
            row.name,
            playlist_view::startModeText(row.startMode),
            endText(row.endMode),
            row.durationMs ? playlist_view::itemTimeText(*row.durationMs) : text("playlist.map.unlimited", "Unlimited"),
        };
        for (int c = 0; c < cells.size(); ++c)
            m_table->setItem(r, c, new QTableWidgetItem(cells.at(c)));
    }
    m_note->setText(noteText(route.stop));
    m_note->setVisible(!m_note->text().isEmpty());
    if (!route.rows.isEmpty()) {
        const PlaylistRouteRow &last = route.rows.constLast();
        m_endpoint->setText(text("playlist.map.endpoint", "Arrival: Playlist %1 / Item %2 — %3",
                                 {QString::number(last.playlistNumber), QString::number(last.row), last.name}));
    } else {
        m_endpoint->clear();
    }
    m_total->setText(text("playlist.map.total", "Total: %1",
                          {route.totalMs ? playlist_view::itemTimeText(*route.totalMs)
                                         : text("playlist.map.unlimited", "Unlimited")}));
}

} // namespace tarnix
