#include "devicelisting.h"

#include <qt_windows.h>

// Drivers enter their ports there: the device's name, and the port's as value.
QByteArray deviceListing()
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, KEY_QUERY_VALUE, &key) !=
        ERROR_SUCCESS)
        return {};
    QByteArray listing;
    wchar_t name[256];
    char value[512];
    for (DWORD i = 0;; ++i) {
        DWORD nameSize = 256; // characters
        DWORD valueSize = sizeof value;
        if (RegEnumValueW(key, i, name, &nameSize, nullptr, nullptr, reinterpret_cast<BYTE *>(value),
                          &valueSize) != ERROR_SUCCESS)
            break;
        listing.append(reinterpret_cast<const char *>(name), static_cast<int>(nameSize * sizeof(wchar_t)));
        listing.append(value, static_cast<int>(valueSize));
    }
    RegCloseKey(key);
    return listing;
}
