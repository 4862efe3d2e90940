#include "serial/devicelisting.h"

QByteArray deviceListing()
{
    return {};
}
