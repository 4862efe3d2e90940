/* Makes a pseudo-terminal look like a serial port with its modem lines up, for
 * terminal programs that refuse to work without. Used with LD_PRELOAD by
 * bench/compare_terminals.py and by nothing else.
 *
 * Requests for modem lines and for the settings of a serial driver succeed on
 * any terminal; all other requests go through unchanged. And udev, which knows
 * nothing of pseudo-terminals, answers with the null device when asked for one:
 * a program that looks its port up there closes it again otherwise. */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <linux/serial.h>
#include <stdarg.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/sysmacros.h>
#include <sys/types.h>
#include <termios.h>
#include <unistd.h>

enum { PTY_MAJOR_FIRST = 136, PTY_MAJOR_LAST = 143 };

/* The next definition of a function. Copied, the detour that ISO C asks for:
 * objects do not convert to functions. */
static void find_next(const char *name, void *function)
{
    void *symbol = dlsym(RTLD_NEXT, name);
    memcpy(function, &symbol, sizeof symbol);
}

int ioctl(int descriptor, unsigned long request, ...)
{
    static int (*next)(int, unsigned long, ...);
    va_list arguments;
    void *argument;

    va_start(arguments, request);
    argument = va_arg(arguments, void *);
    va_end(arguments);
    if (!next)
        find_next("ioctl", &next);

    switch (request) {
    case TIOCMGET:
    case TIOCMSET:
    case TIOCMBIS:
    case TIOCMBIC:
    case TIOCGSERIAL:
    case TIOCSSERIAL:
        break;
    default:
        return next(descriptor, request, argument);
    }
    if (!isatty(descriptor)) {
        errno = ENOTTY;
        return -1;
    }
    if (request == TIOCMGET)
        *(int *)argument = TIOCM_CTS | TIOCM_DSR | TIOCM_CAR | TIOCM_DTR | TIOCM_RTS;
    if (request == TIOCGSERIAL) {
        memset(argument, 0, sizeof(struct serial_struct));
        ((struct serial_struct *)argument)->type = PORT_16550A;
        ((struct serial_struct *)argument)->baud_base = 115200;
    }
    return 0;
}

struct udev;
struct udev_device;

struct udev_device *udev_device_new_from_devnum(struct udev *udev, char type, dev_t number)
{
    static struct udev_device *(*next)(struct udev *, char, dev_t);

    if (!next)
        find_next("udev_device_new_from_devnum", &next);
    if (!next)
        return NULL;
    if (type == 'c' && major(number) >= PTY_MAJOR_FIRST && major(number) <= PTY_MAJOR_LAST)
        number = makedev(1, 3);
    return next(udev, type, number);
}
