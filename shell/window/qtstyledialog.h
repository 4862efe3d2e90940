#pragma once

// Chooses background and text colour of the receive or the send area. Accepted,
// it returns 1 and the settings hold and the file has the new colours;
// cancelled, nothing has changed. The caller applies the skin.

#include "shell/base/qtframelessdialog.h"

#include <QColor>

class QLabel;
class QPushButton;
class QtColorPanel;

class QtStyleDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    enum Area { ReceiveArea, SendArea };

    explicit QtStyleDialog(Area area, QWidget *parent = nullptr);

    QColor background() const;
    QColor textColour() const;

public slots:
    void accept() override;

private:
    void buildUi();
    void showPreview();

    Area m_area;
    QtColorPanel *m_background;
    QtColorPanel *m_text;
    QLabel *m_preview;
    QLabel *m_contrast;
    QPushButton *m_ok;
};
