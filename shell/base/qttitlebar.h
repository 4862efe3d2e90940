#pragma once

// The strip at the top of a frameless window: icon, caption, room for menu
// buttons and the window's buttons. It only signals what was pressed; the
// window's FramelessHelper acts.

#include <QColor>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QToolButton;

class QtTitleBar : public QWidget
{
    Q_OBJECT

public:
    enum ButtonSet {
        MainWindowButtons, // minimise, maximise or restore, close
        DialogButtons,     // close
    };

    explicit QtTitleBar(ButtonSet buttons, QWidget *parent = nullptr);

    void setTitle(const QString &title);
    QString title() const;
    void setIcon(const QIcon &icon);

    // Puts a widget to the left of the window's buttons.
    void addMenuWidget(QWidget *widget);

    // Of the window's buttons, instead of the skin's text color: for a window
    // whose ground is not the skin's.
    void setIconColor(const QColor &color);

    // The close button can be hidden where there is nothing to cancel.
    void setClosable(bool closable);

public slots:
    void setMaximized(bool maximized);

signals:
    void signalCloseWindow();
    void signalMinimizeWindow();
    void signalMaximizeWindow(); // or restore

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QToolButton *addButton(const QString &objectName, const QString &toolTip);
    void drawIcons();

    QLabel *m_icon;
    QLabel *m_title;
    QHBoxLayout *m_menus;
    QHBoxLayout *m_layout;
    QToolButton *m_minimize = nullptr;
    QToolButton *m_maximize = nullptr;
    QToolButton *m_close = nullptr;
    bool m_maximized = false;
    QColor m_iconColor; // invalid: the skin's
};
