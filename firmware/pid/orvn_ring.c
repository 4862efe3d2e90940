#include "orvn_ring.h"

/* Does not compile with a size that the counters cannot wrap at. */
typedef char size_is_a_power_of_two[ORVN_RING_SIZE >= 2u && ORVN_RING_SIZE <= 32768u &&
                                            (ORVN_RING_SIZE & (ORVN_RING_SIZE - 1u)) == 0
                                        ? 1
                                        : -1];

size_t orvn_ring_used(const orvn_ring *ring)
{
    const uint16_t written = ring->written;
    const uint16_t used = (uint16_t)(written - ring->read);
    return used < ORVN_RING_SIZE ? used : ORVN_RING_SIZE;
}

/* The bytes are volatile, too: the compiler must not store them after the counter. */
int orvn_ring_put_all(orvn_ring *ring, const uint8_t *bytes, size_t length)
{
    const uint16_t written = ring->written;
    size_t k;
    if (length > ORVN_RING_SIZE - orvn_ring_used(ring))
        return 0;
    for (k = 0; k < length; ++k)
        ring->bytes[(written + k) % ORVN_RING_SIZE] = bytes[k];
    ring->written = (uint16_t)(written + length);
    return 1;
}

int orvn_ring_put(orvn_ring *ring, uint8_t byte)
{
    if (orvn_ring_put_all(ring, &byte, 1))
        return 1;
    ring->lost = ring->lost + 1u;
    return 0;
}

int orvn_ring_get(orvn_ring *ring, uint8_t *byte)
{
    const uint16_t read = ring->read;
    if (orvn_ring_used(ring) == 0)
        return 0;
    *byte = ring->bytes[read % ORVN_RING_SIZE];
    ring->read = (uint16_t)(read + 1u);
    return 1;
}
