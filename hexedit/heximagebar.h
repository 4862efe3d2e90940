#pragma once

// Shows above the bytes that a file of records is shown at its addresses, and
// what is wrong with its text; offers to see the text's own bytes instead, and
// the way back. Owns its widgets; shows what it is given.

#include <QWidget>

class HexAddressMap;
class QLabel;
class QListWidget;
class QPushButton;
enum class HexForm;
struct HexImage;

class HexImageBar : public QWidget
{
    Q_OBJECT

public:
    explicit HexImageBar(QWidget *parent = nullptr);

    // Hides itself for a plain file.
    void showFile(const HexImage &image, HexForm contentForm, const HexAddressMap &addresses, qint64 size);

signals:
    void bytesWanted();     // the text's own
    void addressesWanted(); // those that the text says

private:
    void showFaults(const HexImage &image);

    QLabel *m_text;
    QLabel *m_faultCount;
    QPushButton *m_showFaults;
    QPushButton *m_other;
    QListWidget *m_faults;
    bool m_isImage = false;
};
