// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A built plug-in library as a host sees it, the same for both interfaces.
//
//     const std::shared_ptr<HostedLibrary> library = OpenVst3("Quillorea.vst3");
//     const std::unique_ptr<HostedPlugin> plugin = library->Create();
//     plugin->Setup(48000, 512);
//     plugin->Activate(true);
//     HostedBlock block{.sampleCount = 512, .inputs = {{pointers, 2}}, .outputs = {{pointers, 2}}};
//     plugin->Process(block);
//
// Nothing here repairs what a caller asks for: blocks larger than told, null buses, calls out of
// order all reach the plug-in as they are, since that is what a test of it needs.
//
// Units    positions 0..1; samples; quarter notes; beats a minute
// Threads  Process on one thread at a time, State and SetState on any, news come from any; the rest
//          on one thread, a host's main thread
// Memory   Process allocates only where a block has more buses, changes or events than any before
// Errors   HostingError with one plain sentence from OpenVst3, OpenVst2 and Create

struct HostingError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct HostedInfo {
    std::string interface;  // "VST 3", "VST 2.4"
    std::string name;
    std::string vendor;
    std::string version;
    std::string category;
    std::string identity;  // class ID or unique ID, in hexadecimal
};

struct HostedBus {
    std::string name;
    int channels = 0;
    bool isInput = false;
    bool isAudio = true;  // else events
    bool isMain = true;   // else auxiliary
};

struct HostedParameter {
    std::uint32_t id = 0;  // VST 2: the index
    std::string name;      // VST 2: cut to 7 letters or what the plug-in gives
    std::string section;
    std::string units;
    int stepCount = 0;
    double defaultPosition = 0;  // VST 2: where it stood when it was made
    bool isAutomatable = true;
    bool isHidden = false;
    bool isBypass = false;
};

// What is not there is not valid.
struct HostedTransport {
    bool isPlaying = false;
    std::optional<double> tempo = {};
    std::optional<double> position = {};
    std::optional<double> barStart = {};
    std::optional<std::pair<int, int>> signature = {};
    std::optional<std::pair<double, double>> cycle = {};  // active
};

struct HostedChange {
    std::uint32_t id = 0;
    int offset = 0;  // samples from the block's start
    double position = 0;
};

struct HostedMidi {
    int offset = 0;  // samples from the block's start
    std::array<std::uint8_t, 3> bytes{};
};

// Null channels: the host gives nothing for this bus.
struct HostedBuffers {
    float** channels = nullptr;
    int channelCount = 0;
};

struct HostedBlock {
    int sampleCount = 0;
    std::vector<HostedBuffers> inputs = {};      // one per bus
    std::vector<HostedBuffers> outputs = {};     // one per bus
    const HostedTransport* transport = nullptr;  // null: the host tells nothing
    std::vector<HostedChange> changes = {};      // of one parameter in order of time
    std::vector<HostedMidi> midi = {};           // to the plug-in
    std::vector<HostedMidi> sentMidi = {};       // from it; Process fills it
};

// What the plug-in told the host since it was last asked.
struct HostedNews {
    bool latencyChanged = false;
    bool busesChanged = false;
    bool valuesChanged = false;
    bool stateIsDirty = false;
    int openGestures = 0;                  // begun and not yet ended, over all time
    std::vector<HostedChange> edits = {};  // by the plug-in itself
};

class HostedPlugin {
public:
    static constexpr std::int64_t kEndless = -1;

    HostedPlugin() = default;
    HostedPlugin(const HostedPlugin&) = delete;
    HostedPlugin& operator=(const HostedPlugin&) = delete;
    virtual ~HostedPlugin() = default;

    virtual const HostedInfo& Info() const = 0;
    virtual std::vector<HostedBus> Buses() = 0;
    // Asks for so many channels on the main buses; the plug-in's answer. While not active.
    virtual bool Arrange(int inputChannels, int outputChannels) = 0;
    virtual void Setup(double sampleRate, int largestBlock) = 0;
    virtual void Activate(bool on) = 0;
    virtual void Process(HostedBlock& block) = 0;

    virtual int Latency() = 0;
    virtual std::int64_t TailLength() = 0;  // samples, or kEndless

    // As the host would list them, the hidden ones included.
    virtual std::vector<HostedParameter> Parameters() = 0;
    virtual double Position(std::uint32_t id) = 0;
    // From the host's main thread; the audio side has it with the next block at the latest.
    virtual void SetPosition(std::uint32_t id, double position) = 0;
    // VST 2 has a text for the present position only, and a position only by setting it: there the
    // parameter moves and is set back.
    virtual std::string TextAt(std::uint32_t id, double position) = 0;
    virtual std::optional<double> PositionOf(std::uint32_t id, const std::string& text) = 0;

    // Empty where there is none.
    virtual std::string State() = 0;
    // The plug-in's answer, which of many is yes whatever the state was.
    virtual bool SetState(std::string_view state) = 0;

    HostedNews TakeNews();

protected:
    template <typename Change>
    void Report(Change change) {
        const std::lock_guard lock(newsLock);
        change(news);
    }

private:
    std::mutex newsLock;
    HostedNews news;  // under newsLock
};

// Unloaded when neither it nor an instance of it is held any more.
class HostedLibrary {
public:
    HostedLibrary() = default;
    HostedLibrary(const HostedLibrary&) = delete;
    HostedLibrary& operator=(const HostedLibrary&) = delete;
    virtual ~HostedLibrary() = default;

    virtual std::unique_ptr<HostedPlugin> Create() = 0;
};

// A bundle's folder, or the library in it.
std::shared_ptr<HostedLibrary> OpenVst3(const std::string& path);
std::shared_ptr<HostedLibrary> OpenVst2(const std::string& path);

// A news is told once; the count of open gestures stays.
inline HostedNews HostedPlugin::TakeNews() {
    const std::lock_guard lock(newsLock);
    HostedNews taken = std::move(news);
    news = {};
    news.openGestures = taken.openGestures;
    return taken;
}
