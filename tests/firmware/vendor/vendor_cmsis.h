#ifndef VENDOR_CMSIS_H
#define VENDOR_CMSIS_H

/*
 * Stands in for the device header of a Cortex-M3 part, so that board_cmsis.c is compiled
 * without one: the handful of names that it uses, with the addresses of such a part.
 * Not for a project; that has the header of its own part.
 */

#include <stdint.h>

typedef struct
{
    volatile uint32_t SR, DR, BRR, CR1;
} USART_TypeDef;

typedef struct
{
    volatile uint32_t CRL, CRH;
} GPIO_TypeDef;

typedef struct
{
    volatile uint32_t CR, CFGR, CIR, APB2RSTR, APB1RSTR, AHBENR, APB2ENR;
} RCC_TypeDef;

typedef enum { USART1_IRQn = 37 } IRQn_Type;

#define USART1 ((USART_TypeDef *)0x40013800u)
#define GPIOA ((GPIO_TypeDef *)0x40010800u)
#define RCC ((RCC_TypeDef *)0x40021000u)

#define USART_SR_ORE (1u << 3)
#define USART_SR_RXNE (1u << 5)
#define USART_SR_TXE (1u << 7)
#define USART_CR1_RE (1u << 2)
#define USART_CR1_TE (1u << 3)
#define USART_CR1_RXNEIE (1u << 5)
#define USART_CR1_TXEIE (1u << 7)
#define USART_CR1_UE (1u << 13)
#define RCC_APB2ENR_IOPAEN (1u << 2)
#define RCC_APB2ENR_USART1EN (1u << 14)

extern uint32_t SystemCoreClock;
void SystemCoreClockUpdate(void);
void SysTick_Handler(void);
void USART1_IRQHandler(void);

static inline void NVIC_EnableIRQ(IRQn_Type number)
{
    ((volatile uint32_t *)0xE000E100u)[(uint32_t)number / 32u] = 1u << ((uint32_t)number % 32u);
}

static inline uint32_t SysTick_Config(uint32_t ticks)
{
    volatile uint32_t *const timer = (volatile uint32_t *)0xE000E010u; /* control, reload, value */
    timer[1] = ticks - 1u;
    timer[2] = 0;
    timer[0] = 7u;
    return 0;
}

static inline void __WFI(void)
{
    __asm volatile("wfi");
}

#endif
