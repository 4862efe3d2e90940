/*
 * The UART by its registers, the clock by SysTick: for Cortex-M parts whose UART has a
 * status and a data register (SR, DR). Where they are named otherwise (ISR, RDR and TDR),
 * the lines with SR and DR change and nothing else.
 */

#include "board.h"
#include "vendor_cmsis.h" /* replace by the device header of the part */

#define BAUD 115200u

static volatile uint32_t milliseconds;

void SysTick_Handler(void)
{
    milliseconds = milliseconds + 1u;
}

void USART1_IRQHandler(void)
{
    const uint32_t status = USART1->SR;
    uint8_t byte;
    if (status & USART_SR_RXNE)
        (void)orvn_ring_put(&board_received, (uint8_t)USART1->DR);
    else if (status & USART_SR_ORE)
        (void)USART1->DR; /* ends the interrupt; the byte is a stale one */
    if ((status & USART_SR_TXE) && (USART1->CR1 & USART_CR1_TXEIE)) {
        if (orvn_ring_get(&board_sending, &byte))
            USART1->DR = byte;
        else
            USART1->CR1 &= ~USART_CR1_TXEIE;
    }
}

void board_start_sending(void)
{
    USART1->CR1 |= USART_CR1_TXEIE; /* the interrupt follows at once */
}

void board_init(void)
{
    /* Clocks of port and UART, PA9 as its output: these two lines belong to the part. */
    RCC->APB2ENR |= RCC_APB2ENR_IOPAEN | RCC_APB2ENR_USART1EN;
    GPIOA->CRH = (GPIOA->CRH & ~0xFF0u) | 0x4B0u;

    SystemCoreClockUpdate();
    USART1->BRR = (SystemCoreClock + BAUD / 2u) / BAUD; /* the UART's bus runs at the core's clock */
    USART1->CR1 = USART_CR1_UE | USART_CR1_TE | USART_CR1_RE | USART_CR1_RXNEIE;
    NVIC_EnableIRQ(USART1_IRQn);
    (void)SysTick_Config(SystemCoreClock / 1000u);
}

uint32_t board_millis(void)
{
    return milliseconds;
}

void board_wait(void)
{
    __WFI();
}
