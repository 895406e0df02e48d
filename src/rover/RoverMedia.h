#pragma once

#include <QByteArrayView>
#include <QString>

// What Rover's own image and sound readers make of a file's bytes: whether it
// can use the file, and when not, why. The block check, the texture warning of
// Add and Replace, `check` and Shrink all ask these two functions, so there is
// one decision for each file.

struct RoverTextureInfo {
    enum Status {
        Usable,       // Rover reads it
        NotGifOrJpeg, // neither reader takes it: the part is drawn untextured
        TooLarge,     // wider or taller than 256 pixels: untextured
        Undefined,    // a four-channel (CMYK or YCCK) JPEG overruns Rover's line buffer
    };
    enum Format { None, Gif, Jpeg };

    Status status = NotGifOrJpeg;
    Format format = None;
    int width = 0; // pixels, when the header could be read
    int height = 0;
    int frames = 0;           // GIF frames; 1 for a JPEG
    bool transparent = false; // a GIF with a transparent colour
    QString reason;           // why Rover cannot use it ("a frame has a colour table of its own"); "" when usable
};

RoverTextureInfo roverTextureInfo(QByteArrayView bytes);

struct RoverSoundInfo {
    bool usable = false;
    QString reason; // why Rover plays nothing ("not plain PCM (format tag 0xFFFE)"); "" when usable
    int channels = 0;
    int sampleRate = 0;
    int bitsPerSample = 0;
    qint64 dataBytes = 0; // length of the data chunk
};

RoverSoundInfo roverSoundInfo(QByteArrayView bytes);
