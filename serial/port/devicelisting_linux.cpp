#include "devicelisting.h"

#include <dirent.h>

QByteArray deviceListing()
{
    QByteArray names;
    if (DIR *folder = opendir("/sys/class/tty")) {
        while (const dirent *item = readdir(folder)) {
            names += item->d_name;
            names += '/';
        }
        closedir(folder);
    }
    return names;
}
