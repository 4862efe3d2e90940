#pragma once

// The frame of the program's own dialogs: title strip, outline, an empty body
// that the derived dialog fills. Modal use through exec(); Esc rejects.

#include <QDialog>

class FramelessHelper;
class QtTitleBar;
class QVBoxLayout;

class QtFramelessDialog : public QDialog
{
    Q_OBJECT

public:
    explicit QtFramelessDialog(const QString &title, QWidget *parent = nullptr);

    // Window title and title strip alike.
    void setTitle(const QString &title);
    QString title() const;

protected:
    QtTitleBar *titleBar() const { return m_titleBar; }
    FramelessHelper *frame() const { return m_frame; }
    // Where the derived dialog puts its widgets: margins of 16 pixels.
    QVBoxLayout *body() const { return m_body; }

    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    QtTitleBar *m_titleBar;
    QVBoxLayout *m_body;
    FramelessHelper *m_frame;
    bool m_placed = false;
};
