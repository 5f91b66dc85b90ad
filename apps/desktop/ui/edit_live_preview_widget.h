#pragma once

#include "ui/edit_video_surface.h"

namespace tarnix {

// The EDIT monitor while a live source is loaded: the source's preview
// picture with a caption in its corner, so that the operator never takes a
// live input for a file.
class EditLivePreviewWidget : public EditVideoSurface
{
    Q_OBJECT

public:
    explicit EditLivePreviewWidget(QWidget *parent = nullptr);

    void setCaption(const QString &caption);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QRect captionRect() const;

    QString m_caption;
};

} // namespace tarnix
