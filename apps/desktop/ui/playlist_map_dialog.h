#pragma once

#include <QDialog>
#include <QPointer>

class QLabel;
class QTableWidget;

namespace tarnix {

class PlaylistModel;

// Where playback goes from an item: each item in play order with its modes
// and the time it adds, why the route ends, where it arrives and the total.
// The model computes the route; this only shows it.
class PlaylistMapDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PlaylistMapDialog(PlaylistModel *model, QWidget *parent = nullptr);

    void showRoute(quint64 itemId);

private:
    QPointer<PlaylistModel> m_model;
    QTableWidget *m_table = nullptr;
    QLabel *m_note = nullptr;
    QLabel *m_endpoint = nullptr;
    QLabel *m_total = nullptr;
};

} // namespace tarnix
