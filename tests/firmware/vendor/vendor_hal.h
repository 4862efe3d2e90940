#ifndef VENDOR_HAL_H
#define VENDOR_HAL_H

/*
 * Stands in for a vendor's HAL header, so that board_hal.c is compiled without one: the
 * handful of names that it uses. Not for a project; that has the HAL of its own part.
 */

#include <stdint.h>

typedef enum { HAL_OK = 0, HAL_ERROR = 1, HAL_BUSY = 2 } HAL_StatusTypeDef;

#define HAL_UART_STATE_READY 0x20u

typedef struct
{
    volatile uint32_t RxState;
} UART_HandleTypeDef;

HAL_StatusTypeDef HAL_UART_Receive_IT(UART_HandleTypeDef *uart, uint8_t *data, uint16_t size);
HAL_StatusTypeDef HAL_UART_Transmit_IT(UART_HandleTypeDef *uart, uint8_t *data, uint16_t size);
void HAL_UART_RxCpltCallback(UART_HandleTypeDef *uart);
void HAL_UART_TxCpltCallback(UART_HandleTypeDef *uart);
void HAL_UART_ErrorCallback(UART_HandleTypeDef *uart);
uint32_t HAL_GetTick(void);

static inline void __WFI(void)
{
    __asm volatile("wfi");
}

static inline void __disable_irq(void)
{
    __asm volatile("cpsid i" ::: "memory");
}

static inline void __enable_irq(void)
{
    __asm volatile("cpsie i" ::: "memory");
}

#endif
