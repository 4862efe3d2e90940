#include "korvexresources.h"

#include <QDir>

void initKorvexResources()
{
    Q_INIT_RESOURCE(korvex);
    Q_INIT_RESOURCE(skins);
}
