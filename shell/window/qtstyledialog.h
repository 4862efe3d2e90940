#pragma once

// Chooses background and text color of the receive or the send area, or that
// the area has the colors of the skin. Accepted, it returns 1 and has set
// and written the settings; cancelled, it changes nothing. The caller applies
// the skin.

#include "qtframelessdialog.h"

#include <QColor>

class QCheckBox;
class QLabel;
class QPushButton;
class QTabWidget;
class QtColorPanel;

class QtStyleDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    enum Area { ReceiveArea, SendArea };

    explicit QtStyleDialog(Area area, QWidget *parent = nullptr);

    QColor background() const;
    QColor textColor() const;

public slots:
    void accept() override;

private:
    void buildUi();
    QLayout *buildChoices();
    void followSkin(bool follows);
    void showPreview();

    Area m_area;
    QtColorPanel *m_background;
    QtColorPanel *m_text;
    QTabWidget *m_tabs;
    QCheckBox *m_follow;
    QLabel *m_preview;
    QLabel *m_contrast;
    QPushButton *m_ok;
};
