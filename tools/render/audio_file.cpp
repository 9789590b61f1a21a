// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

#include "errors.h"

namespace {

struct NamedFormat {
    const char* ending;
    int format;
};

constexpr NamedFormat kFormats[] = {
    {"", SF_FORMAT_WAV | SF_FORMAT_FLOAT},        {".wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT},
    {".flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24}, {".aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24},
    {".aif", SF_FORMAT_AIFF | SF_FORMAT_PCM_24},  {".ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
};

constexpr double kVorbisQuality = 0.7;  // about 220 kbit/s in stereo

int FormatNamedBy(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    for (const NamedFormat& named : kFormats)
        if (ending == named.ending) return named.format;
    throw UsageError("Cannot write '" + path + "': its name must end in .wav, .flac, .aiff, .aif " +
                     "or .ogg.");
}

bool IsFloat(int format) { return (format & SF_FORMAT_SUBMASK) == SF_FORMAT_FLOAT; }

int Container(int format) { return format & SF_FORMAT_TYPEMASK; }

// Whether the sizes in the file's headers, which have 32 bits in WAV and AIFF, might not do.
bool MayPassFourGigabytes(const SF_INFO& info, std::int64_t maxFrames) {
    constexpr std::int64_t kRoomForHeaders = 1 << 16;
    constexpr std::int64_t kMost = std::numeric_limits<std::uint32_t>::max() - kRoomForHeaders;
    const int sampleBytes = IsFloat(info.format) ? 4 : 3;
    return maxFrames <= 0 || maxFrames > kMost / (info.channels * sampleBytes);
}

OutputFile& AsFile(void* user) { return *static_cast<OutputFile*>(user); }

sf_count_t SeekFile(sf_count_t offset, int whence, void* user) {
    OutputFile& file = AsFile(user);
    const sf_count_t start = whence == SEEK_SET   ? 0
                             : whence == SEEK_CUR ? file.Position()
                                                  : file.Length();
    return file.Seek(start + offset) ? file.Position() : -1;
}

SF_VIRTUAL_IO FileOperations() {
    return {.get_filelen = [](void* user) -> sf_count_t { return AsFile(user).Length(); },
            .seek = SeekFile,
            .read = [](void*, sf_count_t, void*) -> sf_count_t { return 0; },
            .write = [](const void* bytes, sf_count_t count, void* user) -> sf_count_t {
                return AsFile(user).Write(bytes, count) ? count : 0;
            },
            .tell = [](void* user) -> sf_count_t { return AsFile(user).Position(); }};
}

}  // namespace

AudioReader::AudioReader(const std::string& path) : path(path) {
    std::error_code failed;
    const auto status = std::filesystem::status(path, failed);
    if (failed) throw RenderError("Cannot read '" + path + "': " + failed.message() + ".");
    if (std::filesystem::is_directory(status))
        throw RenderError("Cannot read '" + path + "': it is a folder.");
    file.reset(sf_open(path.c_str(), SFM_READ, &info));
    if (file == nullptr)
        throw RenderError("Cannot read '" + path + "' as audio: " + sf_strerror(nullptr));
    if (info.channels > kMaxChannels)
        throw RenderError("Cannot render '" + path + "': it has " + std::to_string(info.channels) +
                          " channels, and 8 is the most.");
    if (info.samplerate < kMinRate)
        throw RenderError("Cannot render '" + path + "': its rate is " +
                          std::to_string(info.samplerate) + " Hz, and 1000 Hz is the least.");
}

int AudioReader::Read(std::span<float> block) {
    const auto wanted = static_cast<sf_count_t>(block.size()) / info.channels;
    const sf_count_t frames = sf_readf_float(file.get(), block.data(), wanted);
    if (frames < wanted && sf_error(file.get()) != SF_ERR_NO_ERROR)
        throw RenderError("Cannot read on in '" + path + "': " + sf_strerror(file.get()));
    return static_cast<int>(frames);
}

std::int64_t AudioReader::FrameCount() const {
    return info.frames == SF_COUNT_MAX ? 0 : info.frames;
}

AudioWriter::AudioWriter(const std::string& path, int rate, int channels, std::int64_t maxFrames)
    : path(path),
      info{.frames = 0,
           .samplerate = rate,
           .channels = channels,
           .format = FormatNamedBy(path),
           .sections = 0,
           .seekable = 0},
      output(path) {
    Open(maxFrames);
}

void AudioWriter::Open(std::int64_t maxFrames) {
    const bool large = MayPassFourGigabytes(info, maxFrames);
    if (large && Container(info.format) == SF_FORMAT_AIFF)
        throw RenderError("Cannot write '" + path + "': AIFF holds 4 GiB at most, .wav more.");
    if (large && Container(info.format) == SF_FORMAT_WAV)
        info.format = SF_FORMAT_RF64 | SF_FORMAT_FLOAT;
    SF_VIRTUAL_IO operations = FileOperations();
    file.reset(sf_open_virtual(&operations, SFM_WRITE, &info, &output));
    if (file == nullptr) {
        output.ThrowIfFailed();
        throw RenderError("Cannot write '" + path + "' with " + std::to_string(info.channels) +
                          " channels at " + std::to_string(info.samplerate) +
                          " Hz: " + sf_strerror(nullptr));
    }
    sf_command(file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // The chunk holds the time of day, and two renderings of the same sound should be the same.
    sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(file.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    double quality = kVorbisQuality;
    sf_command(file.get(), SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof(quality));
}

void AudioWriter::Write(std::span<const float> block) {
    std::span<const float> written = block;
    if (Clips()) {
        finite.assign(block.begin(), block.end());
        std::replace_if(
            finite.begin(), finite.end(), [](float x) { return !std::isfinite(x); }, 0.0F);
        written = finite;
    }
    const auto wanted = static_cast<sf_count_t>(written.size());
    ThrowIfFailed(sf_write_float(file.get(), written.data(), wanted) == wanted);
}

void AudioWriter::Finish() {
    file.reset();
    output.Commit();
}

bool AudioWriter::Clips() const { return !IsFloat(info.format); }

void AudioWriter::ThrowIfFailed(bool complete) const {
    output.ThrowIfFailed();
    if (!complete) throw RenderError("Cannot write '" + path + "': " + sf_strerror(file.get()));
}
