#pragma once

// The status bar's notice: an icon for its kind and one line of text that is
// cut at the end and never widens the window. The style sheets see the kind as
// the property "kind" ("info" or "error").

#include <QLabel>

class StatusLabel : public QLabel
{
    Q_OBJECT

public:
    explicit StatusLabel(QWidget *parent = nullptr);

    void showNotice(const QString &text, bool isError);
    // No notice is current; a click still lists the recent ones.
    void showIdle();
    QString fullText() const { return m_fullText; }
    bool isError() const { return m_isError; }

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

signals:
    void clicked();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString m_fullText;
    bool m_isError = false;
};
