#pragma once

#include "Views/Albums/BWThumbnailDragItem.h"

#include <QList>
#include <QMimeData>

/// Files on their way into another program: their URLs, the type of the first, and its thumbnail as an image, which is
/// encoded only when somebody asks for it. GUI thread.
class BWThumbnailMimeData : public QMimeData {
    Q_OBJECT

public:
    explicit BWThumbnailMimeData(const QList<BWThumbnailDragItem> &items);

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override { return formats().contains(mimeType); }

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    QImage m_image;
};
