#pragma once

// Asks for the names and units of the channels and keeps them in the settings.

#include "qtframelessdialog.h"

#include <array>

class QLineEdit;

class PidChannelsDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    static constexpr int channels = 5;

    explicit PidChannelsDialog(QWidget *parent = nullptr);

public slots:
    void accept() override;

private:
    std::array<QLineEdit *, channels> m_names;
    std::array<QLineEdit *, channels> m_units;
};
