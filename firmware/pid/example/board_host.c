/*
 * The board as a program for Linux, with standard input and output as its UART:
 *   socat PTY,link=COM9,raw,echo=0 EXEC:./orvn_pid_example
 * It has no interrupts: board_wait() moves the bytes. Where the program is slow, input
 * waits instead of being lost. Ends when its input ends.
 */

#define _POSIX_C_SOURCE 200809L

#include "board.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

static void read_input(void)
{
    uint8_t bytes[ORVN_RING_SIZE];
    const size_t room = ORVN_RING_SIZE - orvn_ring_used(&board_received);
    const ssize_t count = room > 0 ? read(STDIN_FILENO, bytes, room) : -1;
    if (count == 0 || (count < 0 && room > 0 && errno != EAGAIN && errno != EINTR))
        exit(0);
    if (count > 0)
        (void)orvn_ring_put_all(&board_received, bytes, (size_t)count);
}

/* A byte leaves the ring when it is written; one at a time, as from a UART. */
static void write_output(void)
{
    static uint8_t byte;
    static int has_byte;
    for (;;) {
        if (!has_byte)
            has_byte = orvn_ring_get(&board_sending, &byte);
        if (!has_byte)
            return;
        if (write(STDOUT_FILENO, &byte, 1) != 1) {
            if (errno != EAGAIN && errno != EINTR)
                exit(0);
            return;
        }
        has_byte = 0;
    }
}

void board_init(void)
{
    const int flags = fcntl(STDOUT_FILENO, F_GETFL);
    if (flags < 0 || fcntl(STDOUT_FILENO, F_SETFL, flags | O_NONBLOCK) < 0)
        exit(1);
    (void)signal(SIGPIPE, SIG_IGN);
}

uint32_t board_millis(void)
{
    struct timespec now;
    (void)clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint32_t)now.tv_sec * 1000u + (uint32_t)(now.tv_nsec / 1000000);
}

void board_start_sending(void)
{
    write_output();
}

void board_wait(void)
{
    struct pollfd input = {STDIN_FILENO, POLLIN, 0};
    write_output();
    if (poll(&input, 1, 1) > 0)
        read_input();
}
