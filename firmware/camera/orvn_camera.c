#include "orvn_camera.h"

#include <string.h>

/* Offsets within a packet. */
enum { DEVICE = 4, LENGTH = 5, COMMAND = 9, BODY = 10 };

#define OVERHEAD (ORVN_CAMERA_HEADER + ORVN_CAMERA_TRAILER)

enum { IMAGE_FORMAT = 1, IMAGE_DATA = 2, WRITE_REGISTER = 16, READ_REGISTER = 17 };

static const uint8_t magic[4] = {0x4F, 0x52, 0x56, 0x4E}; /* "ORVN" */

static void put(uint8_t *at, uint32_t value, uint8_t size)
{
    uint8_t k;
    for (k = 0; k < size; ++k)
        at[k] = (uint8_t)(value >> (8u * k));
}

static uint32_t get(const uint8_t *at, uint8_t size)
{
    uint32_t value = 0;
    uint8_t k;
    for (k = 0; k < size; ++k)
        value |= (uint32_t)at[k] << (8u * k);
    return value;
}

static uint8_t limited(uint8_t length)
{
    return length < 1u ? 1u : length > 4u ? 4u : length;
}

/* 0 is what the host is set to at first. */
static uint8_t limited_address(uint8_t length)
{
    return length == 0 ? 2u : limited(length);
}

/* Sixteen entries instead of 256: 32 bytes of flash. */
uint16_t orvn_camera_crc(uint16_t crc, const uint8_t *bytes, size_t count)
{
    static const uint16_t table[16] = {0x0000, 0xCC01, 0xD801, 0x1400, 0xF001, 0x3C00, 0x2800, 0xE401,
                                       0xA001, 0x6C00, 0x7800, 0xB401, 0x5000, 0x9C01, 0x8801, 0x4400};
    for (; count > 0; --count, ++bytes) {
        crc = (uint16_t)(crc ^ *bytes);
        crc = (uint16_t)((crc >> 4) ^ table[crc & 0xFu]);
        crc = (uint16_t)((crc >> 4) ^ table[crc & 0xFu]);
    }
    return crc;
}

/* ---- packets to the host */

static void put_header(uint8_t *packet, uint8_t device, uint8_t command, uint32_t body)
{
    memcpy(packet, magic, sizeof magic);
    packet[DEVICE] = device;
    put(packet + LENGTH, body + OVERHEAD, 4);
    packet[COMMAND] = command;
}

/* Writes everything around a short body that is already in the buffer. */
static size_t finish(uint8_t *packet, uint8_t device, uint8_t command, size_t body)
{
    const size_t before = body + ORVN_CAMERA_HEADER;
    put_header(packet, device, command, (uint32_t)body);
    put(packet + before, orvn_camera_crc(ORVN_CAMERA_CRC_START, packet, before), 2);
    return body + OVERHEAD;
}

size_t orvn_camera_announce(uint8_t *packet, uint8_t device, uint8_t format, uint16_t width, uint16_t height)
{
    packet[BODY] = format;
    put(packet + BODY + 1, width, 2);
    put(packet + BODY + 3, height, 2);
    return finish(packet, device, IMAGE_FORMAT, 5);
}

uint16_t orvn_camera_image_begin(uint8_t *header, uint8_t device, uint32_t size)
{
    put_header(header, device, IMAGE_DATA, size < ORVN_CAMERA_IMAGE_MAX ? size : ORVN_CAMERA_IMAGE_MAX);
    return orvn_camera_crc(ORVN_CAMERA_CRC_START, header, ORVN_CAMERA_HEADER);
}

void orvn_camera_image_end(uint8_t *trailer, uint16_t crc)
{
    put(trailer, crc, 2);
}

size_t orvn_camera_reply(uint8_t *packet, uint8_t device, uint8_t status, uint32_t address, uint32_t value,
                         uint8_t value_length)
{
    value_length = limited(value_length);
    packet[BODY] = status;
    put(packet + BODY + 1, address, 2);
    put(packet + BODY + 3, value, value_length);
    return finish(packet, device, READ_REGISTER, 3u + value_length);
}

/* ---- requests of the host */

void orvn_camera_receiver_init(orvn_camera_receiver *receiver, uint8_t address_length, uint8_t value_length)
{
    memset(receiver, 0, sizeof *receiver);
    receiver->address_length = limited_address(address_length);
    receiver->value_length = limited(value_length);
}

/*
 * The length of a request; 0 where there is no such command. The lengths in the
 * receiver are limited again, since it may not have been initialized.
 */
static uint8_t length_of(const orvn_camera_receiver *receiver, uint8_t command)
{
    const uint8_t address = limited_address(receiver->address_length);
    if (command == READ_REGISTER)
        return (uint8_t)(OVERHEAD + 2u + address);
    if (command == WRITE_REGISTER)
        return (uint8_t)(OVERHEAD + address + limited(receiver->value_length));
    return 0;
}

/* Whether the bytes are the beginning of a request, or a complete one. */
static int may_be_request(const orvn_camera_receiver *receiver, const uint8_t *bytes, uint8_t count)
{
    const uint8_t compared = count < sizeof magic ? count : (uint8_t)sizeof magic;
    uint8_t length;
    if (memcmp(bytes, magic, compared) != 0)
        return 0;
    if (count <= COMMAND)
        return 1;
    length = length_of(receiver, bytes[COMMAND]);
    return length != 0 && get(bytes + LENGTH, 4) == length;
}

/* Drops bytes at the front until the rest may be (the beginning of) a request. */
static void resynchronize(orvn_camera_receiver *receiver)
{
    uint8_t skipped = 0;
    while (skipped < receiver->count &&
           !may_be_request(receiver, receiver->bytes + skipped, (uint8_t)(receiver->count - skipped)))
        ++skipped;
    receiver->count = (uint8_t)(receiver->count - skipped);
    memmove(receiver->bytes, receiver->bytes + skipped, receiver->count);
}

int orvn_camera_receive(orvn_camera_receiver *receiver, uint8_t byte, orvn_camera_request *request)
{
    const uint8_t *const packet = receiver->bytes;
    const uint8_t addresses = limited_address(receiver->address_length);
    uint8_t length;
    if (receiver->count >= sizeof receiver->bytes)
        receiver->count = 0; /* not initialized */
    receiver->bytes[receiver->count++] = byte;
    resynchronize(receiver);
    if (receiver->count <= COMMAND)
        return 0;
    length = length_of(receiver, packet[COMMAND]);
    if (receiver->count < length)
        return 0;
    memset(request, 0, sizeof *request);
    request->device = packet[DEVICE] & 1u;
    request->write = packet[COMMAND] == WRITE_REGISTER;
    if (request->write) {
        request->address = get(packet + BODY, addresses);
        request->value = get(packet + BODY + addresses, limited(receiver->value_length));
    } else {
        request->reg_id = (uint16_t)get(packet + BODY, 2);
        request->address = get(packet + BODY + 2, addresses);
    }
    if (get(packet + length - 2, 2) != orvn_camera_crc(ORVN_CAMERA_CRC_START, packet, length - 2u))
        request->status = ORVN_CAMERA_BAD_PACKET;
    if (request->status == ORVN_CAMERA_OK) {
        receiver->count = 0;
    } else { /* it may have been cut, and the next one may have begun in it */
        receiver->bytes[0] = 0;
        resynchronize(receiver);
    }
    return 1;
}
