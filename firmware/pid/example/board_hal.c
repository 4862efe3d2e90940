/*
 * UART and clock through the vendor's HAL. The project's own start code, which the
 * vendor's tool writes, sets up the clocks, makes `huart1` and enables its interrupt:
 * call it from board_init().
 */

#include "board.h"
#include "vendor_hal.h" /* replace by the HAL header of the part */

#include <stdbool.h>

extern UART_HandleTypeDef huart1;

static uint8_t received;
static uint8_t chunk[32]; /* what the HAL is sending */
static uint16_t chunk_length;
static volatile bool is_sending;

/* Also starts again what the HAL has ended after an error of the line. */
static void listen(void)
{
    if (huart1.RxState == HAL_UART_STATE_READY)
        (void)HAL_UART_Receive_IT(&huart1, &received, 1);
}

void HAL_UART_RxCpltCallback(UART_HandleTypeDef *uart)
{
    if (uart != &huart1)
        return;
    (void)orvn_ring_put(&board_received, received);
    listen();
}

void HAL_UART_ErrorCallback(UART_HandleTypeDef *uart)
{
    if (uart == &huart1)
        listen();
}

/* Called while nothing is being sent. Keeps a chunk that the HAL refuses. */
static void send_next(void)
{
    while (chunk_length < sizeof chunk && orvn_ring_get(&board_sending, &chunk[chunk_length]))
        ++chunk_length;
    is_sending = chunk_length > 0 && HAL_UART_Transmit_IT(&huart1, chunk, chunk_length) == HAL_OK;
}

void HAL_UART_TxCpltCallback(UART_HandleTypeDef *uart)
{
    if (uart != &huart1)
        return;
    chunk_length = 0;
    send_next();
}

/* Masked: the HAL refuses to receive the next byte while it is being told to send. */
void board_start_sending(void)
{
    if (is_sending)
        return; /* the callback goes on */
    __disable_irq();
    send_next();
    __enable_irq();
}

void board_init(void)
{
    listen();
}

uint32_t board_millis(void)
{
    return HAL_GetTick();
}

void board_wait(void)
{
    listen();
    __WFI();
}
