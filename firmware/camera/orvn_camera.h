#ifndef ORVN_CAMERA_H
#define ORVN_CAMERA_H

/*
 * The board's side of the camera link: builds the packets that carry pictures,
 * announcements and register values, and parses the host's register requests.
 *
 * C99, no allocation, no global state, independent of byte order. It knows no
 * line: a picture is sent as a header, its data from where it is in memory, and
 * two bytes of checksum, so that no copy of it is needed.
 *
 * A packet, all numbers little-endian:
 *   "ORVN" | device (1 byte) | length of the packet (4) | command (1) | body |
 *   CRC-16/MODBUS of all bytes before it (2)
 */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ORVN_CAMERA_HEADER 10u /* bytes before the body */
#define ORVN_CAMERA_TRAILER 2u /* bytes after it */
#define ORVN_CAMERA_ANNOUNCEMENT 17u
#define ORVN_CAMERA_REPLY_MAX 19u
#define ORVN_CAMERA_REQUEST_MAX 20u
#define ORVN_CAMERA_IMAGE_MAX 67108852u /* bytes of a picture; the host refuses packets above 64 MB */

/* Formats of pictures. */
enum {
    ORVN_CAMERA_JPG = 1,
    ORVN_CAMERA_BMP = 2,
    ORVN_CAMERA_PNG = 3,
    ORVN_CAMERA_RGB565 = 4,
    ORVN_CAMERA_RGB888 = 5,
    ORVN_CAMERA_YUV422 = 7
};

/* How a read request ended. */
enum { ORVN_CAMERA_OK = 0, ORVN_CAMERA_BAD_PACKET = 1, ORVN_CAMERA_NO_REGISTER = 2 };

/* CRC-16/MODBUS; begin with ORVN_CAMERA_CRC_START and continue with the result. */
#define ORVN_CAMERA_CRC_START 0xFFFFu
uint16_t orvn_camera_crc(uint16_t crc, const uint8_t *bytes, size_t count);

/* Tells the host what the pictures of a device (0 or 1) are. Returns the length. */
size_t orvn_camera_announce(uint8_t *packet, uint8_t device, uint8_t format, uint16_t width, uint16_t height);

/*
 * A picture: send the header of ORVN_CAMERA_HEADER bytes, then the data in
 * pieces of any size, then the two bytes of orvn_camera_image_end(). The size in the
 * header is at most ORVN_CAMERA_IMAGE_MAX; more data than that is not to be sent.
 *   crc = orvn_camera_image_begin(header, device, size);
 *   crc = orvn_camera_crc(crc, piece, count);     for each piece
 */
uint16_t orvn_camera_image_begin(uint8_t *header, uint8_t device, uint32_t size);
void orvn_camera_image_end(uint8_t *trailer, uint16_t crc);

/* Answers a read request; value_length is limited to 1 to 4 bytes. Returns the length. */
size_t orvn_camera_reply(uint8_t *packet, uint8_t device, uint8_t status, uint32_t address, uint32_t value,
                         uint8_t value_length);

typedef struct
{
    uint8_t write;   /* 1: the value is to be written; 0: it is asked for */
    uint8_t device;  /* 0 or 1 */
    uint16_t reg_id; /* of a read */
    uint32_t address;
    uint32_t value; /* of a write */
    uint8_t status; /* ORVN_CAMERA_BAD_PACKET: the checksum was wrong; answer so or be silent */
} orvn_camera_request;

/*
 * One for each line, initialized by ORVN_CAMERA_RECEIVER_INIT or
 * orvn_camera_receiver_init(). Zeroed, as static memory is, it is ready for what the
 * host is set to at first: addresses of 2 bytes, values of 1.
 */
typedef struct
{
    uint8_t address_length;
    uint8_t value_length;
    uint8_t bytes[ORVN_CAMERA_REQUEST_MAX];
    uint8_t count;
} orvn_camera_receiver;

/* The lengths are what the host is set to, at most 4 bytes each; 0 is 2 and 1, as above. */
#define ORVN_CAMERA_RECEIVER_INIT(address_length, value_length)                                              \
    {                                                                                                        \
        (address_length), (value_length), {0}, 0                                                             \
    }
void orvn_camera_receiver_init(orvn_camera_receiver *receiver, uint8_t address_length, uint8_t value_length);

/*
 * Processes one received byte. Returns 1 when it completes a request, which is then
 * in *request, otherwise 0. Other bytes are skipped.
 */
int orvn_camera_receive(orvn_camera_receiver *receiver, uint8_t byte, orvn_camera_request *request);

#ifdef __cplusplus
}
#endif

#endif
