#ifndef ORVN_RING_H
#define ORVN_RING_H

/*
 * Bytes on their way between an interrupt and the main loop: one side puts, the
 * other side gets, and neither ever waits or masks an interrupt.
 *
 * C99, no allocation, no global state. For one writer and one reader on one core:
 * each of the two counters has one writer and is stored in one instruction (16 bits).
 * Between two cores or with a data cache, barriers of the part are needed in addition.
 */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A power of two, 2 to 32768; another one is set for all files of a project: -DORVN_RING_SIZE=512u */
#ifndef ORVN_RING_SIZE
#define ORVN_RING_SIZE 256u
#endif

/* Zeroed, as static memory is, it is empty and ready; elsewhere use ORVN_RING_INIT. */
typedef struct
{
    volatile uint8_t bytes[ORVN_RING_SIZE];
    volatile uint16_t written; /* bytes put so far, modulo 2^16; belongs to the writer */
    volatile uint16_t read;    /* bytes got so far; belongs to the reader */
    volatile uint32_t lost;    /* bytes that orvn_ring_put() had no room for; for the debugger */
} orvn_ring;

#define ORVN_RING_INIT                                                                                       \
    {                                                                                                        \
        {0}, 0, 0, 0                                                                                         \
    }

/* The writer's side. Each returns 0 where there is no room. */
int orvn_ring_put(orvn_ring *ring, uint8_t byte);                            /* counts the byte as lost */
int orvn_ring_put_all(orvn_ring *ring, const uint8_t *bytes, size_t length); /* all or none; counts nothing */

/* The reader's side. Returns 0 where the ring is empty. */
int orvn_ring_get(orvn_ring *ring, uint8_t *byte);

/* For either side; at most ORVN_RING_SIZE, also of one that was not initialized. */
size_t orvn_ring_used(const orvn_ring *ring);

#ifdef __cplusplus
}
#endif

#endif
