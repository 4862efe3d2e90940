// Any bytes on the board's side of the camera link: requests are within bounds.

#include "orvn_camera.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    orvn_camera_receiver receiver;
    orvn_camera_receiver_init(&receiver, data[0] % 8, data[0] / 8);
    orvn_camera_request request;
    for (size_t k = 1; k < size; ++k) {
        if (orvn_camera_receive(&receiver, data[k], &request) && (request.device > 1 || request.write > 1))
            abort();
        if (receiver.count >= ORVN_CAMERA_REQUEST_MAX)
            abort();
    }
    return 0;
}
