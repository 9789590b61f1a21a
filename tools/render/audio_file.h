// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "output_file.h"

// Audio files, a block at a time.
//
// Units    frames: one sample for every channel; samples interleaved, full scale 1
// Memory   a block; never the whole file
// Errors   RenderError where a file can't be opened, read on or written on; UsageError where the
//          output's name has an unknown ending

struct SoundFileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, SoundFileCloser>;

class AudioReader {
public:
    static constexpr int kMaxChannels = 8;
    static constexpr int kMinRate = 1000;  // hertz; below it the shortest delays come to nothing

    explicit AudioReader(const std::string& path);

    // Fills the block as far as the file goes; 0 at its end.
    int Read(std::span<float> block);

    int Channels() const { return info.channels; }
    int Rate() const { return info.samplerate; }
    // 0 where the file does not tell.
    std::int64_t FrameCount() const;

private:
    std::string path;
    SF_INFO info = {};
    SoundFile file;
};

// Float WAV, or what the name says: 24-bit FLAC and AIFF, Vorbis in OGG. These clip at full scale,
// and a sample that is no finite number becomes 0 in them. A WAV that grows past 4 GiB is written
// as RF64.
class AudioWriter {
public:
    // maxFrames is the most that will come, 0 for no idea.
    AudioWriter(const std::string& path, int rate, int channels, std::int64_t maxFrames);

    void Write(std::span<const float> block);
    // The file appears under its name. Nothing may be written afterwards.
    void Finish();

    bool Clips() const;

private:
    void Open(std::int64_t maxFrames);
    void ThrowIfFailed(bool complete) const;

    std::string path;
    SF_INFO info = {};
    std::vector<float> finite;  // the block without infinities, for formats that lack them
    OutputFile output;
    SoundFile file;  // writes into output until it is closed
};
