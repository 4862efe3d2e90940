#include "devicelisting.h"

QByteArray deviceListing()
{
    return {};
}
