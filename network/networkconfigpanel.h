#pragma once

// The network page's link parameters, which begin with those of the last link.

#include "networkfields.h"

class NetworkConfigPanel : public NetworkFields
{
    Q_OBJECT

public:
    // Chooses the defaults of the settings.
    explicit NetworkConfigPanel(QWidget *parent = nullptr);

    void loadDefaults();
    void saveDefaults() const; // when a link has been opened

private:
    void namePort();
};
