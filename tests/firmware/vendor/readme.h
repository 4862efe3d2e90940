/* What the readme's pieces of code leave to the board. */

#include <stddef.h>
#include <stdint.h>

void uart_write(const uint8_t *bytes, size_t length);
void link_write(const uint8_t *bytes, size_t length);
int sensor_read(uint32_t address, uint32_t *value);
void sensor_write(uint32_t address, uint32_t value);
