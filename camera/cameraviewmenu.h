#pragma once

// "视图" in the row below the pictures: how they are shown, and as what their bytes are
// read. The settings own the choices.

#include <QPushButton>

class ImageViewer;
class QAction;
class QActionGroup;

class CameraViewMenu : public QPushButton
{
    Q_OBJECT

public:
    // The viewer outlives the menu.
    explicit CameraViewMenu(ImageViewer *viewer, QWidget *parent = nullptr);

    void load(); // shows what the settings hold

signals:
    void histogramWanted(bool wanted); // whenever the choices are loaded

private:
    QAction *addToggle(const QString &text, const char *name);
    void addFormats();
    void store();

    ImageViewer *m_viewer;
    QAction *m_fit;
    QAction *m_leftRight;
    QAction *m_upDown;
    QAction *m_histogram;
    QActionGroup *m_formats; // their data is the number that the settings keep
};
