// Where the decoder thread shows its pictures.
#pragma once

#include "media/h264/decoder.h"

class IVrVideoOutput {
public:
    // Takes a picture, which is valid during the call only. False: its size does not fit. Called on the
    // decoder thread.
    virtual bool ShowFrame(const h264::DecodedPicture& picture) = 0;

protected:
    ~IVrVideoOutput() = default;
};
