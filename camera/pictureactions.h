#pragma once

// The row below the pictures: saves a shown picture to a file or copies it to the
// clipboard. Knows the viewer, not where pictures come from.

#include "notice.h"

#include <QPixmap>
#include <QWidget>

class ImageViewer;
class QComboBox;

class PictureActions : public QWidget
{
    Q_OBJECT

public:
    explicit PictureActions(const ImageViewer *viewer, QWidget *parent = nullptr);

    void setTwo(bool two); // two pictures are shown: the user chooses one

signals:
    void notify(const Notice &notice);

private:
    QPixmap chosen() const;
    void save();
    void copy();

    const ImageViewer *m_viewer;
    QComboBox *m_choice;
};
