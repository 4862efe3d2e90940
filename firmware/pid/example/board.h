#ifndef BOARD_H
#define BOARD_H

/*
 * All that the program knows of the board. One file implements the first half on the
 * UART and clock of a part (board_hal.c, board_cmsis.c, board_host.c), another the
 * second half on sensors and outputs (process_simulated.c until they are wired).
 */

#include "orvn_ring.h"

/* Filled by the UART's interrupt, emptied by the main loop; and the other way round. */
extern orvn_ring board_received;
extern orvn_ring board_sending;

void board_init(void);          /* UART with its interrupt, clock of milliseconds */
uint32_t board_millis(void);    /* since the start; wraps */
void board_start_sending(void); /* there are bytes in board_sending */
void board_wait(void);          /* returns with the next interrupt, within a millisecond */

/* Channels are 1 to 5; an output of 0 is what stands still safely. */
int32_t board_read_sensor(uint8_t channel);
void board_write_output(uint8_t channel, float output);

#endif
