// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "dsp/upsampler.h"
#include "foundation/objects/array_queue.h"
#include "foundation/objects/growing_buffer.h"
#include "foundation/objects/lock.h"
#include "plugin/frame/audio_plugin_adapter.h"
#include "plugin/frame/automation_table.h"
#include "plugin/frame/channel_mode.h"
#include "plugin/frame/channels.h"
#include "plugin/frame/gain_compensator.h"
#include "plugin/frame/midi_processor.h"

class AutomationUpdateRequestThread;
class MAttribute;
class MEditorFactory;
class MStyle;
struct MStoreVisitor;

// Everything between a host's call and the work of an effect, for any host interface: repairs the
// host's buffers, passes a bypassed signal by, routes channel modes, cuts blocks for automation and
// modulators, compensates the gain, decodes MIDI, serves parameters by number.
//
// Life     construct, build parameters, RebuildAutomationTable, SetHostSampleRate, InitProcessing,
//          then any number of ProcessAudio; InitProcessing again after any change of structure
// Units    samples at the host's rate, inside Process at sampleRate; quarter notes; beats a minute
// Arrays   128 pointers, channel c of bus b at b * 8 + c
// Threads  ProcessAudio, ProcessMIDIEvent and the transport on the audio thread; parameter values
//          on any; the rest on any but the audio thread
// Locks    raise processingDisabled, then stateLock, then processLock
// Memory   ProcessAudio allocates only where a block is larger than any before it and than the
//          announced size
// Errors   none gets out of an operation that a host calls, see guarded.h

class MAudioPlugin : public MAudioPluginAutomation<MMIDIProcessor>, public AutomationOwner {
public:
    using AutomationAdapter = ::AutomationAdapter;
    class MEditor;  // defined by the editors

    MAudioPlugin();
    MAudioPlugin(const MAudioPlugin&) = delete;
    MAudioPlugin& operator=(const MAudioPlugin&) = delete;
    ~MAudioPlugin() override;

    // The largest block that the host is going to send; memory for it is taken by the next
    // InitProcessing.
    void AnnounceBlockSize(int samples) { announcedBlockSize = samples; }
    // Hosts that only look at a plug-in announce none.
    bool HasAnnouncedBlockSize() const { return announcedBlockSize > 0; }
    // Behind it comes InitProcessing. rate in hertz, at least 1.
    void SetHostSampleRate(int rate);
    // How many channels the host has really connected; 0 leaves null pointers alone, -1: unknown.
    void SetConnectedChannels(int inputs, int outputs);
    // Raises what MUpsampler raises for a factor that can't be had; nothing changes then.
    void SetUpsampling(int factor);
    // Brings everything in line with what is requested; tells the host of a new latency.
    virtual void InitProcessing();

    // The audio entry. inputs and outputs have 128 pointers, which are changed where channels are
    // missing; the host's input samples are changed too. replacing false adds to the outputs.
    // While processingDisabled is raised the outputs become silence.
    void ProcessAudio(float** inputs, float** outputs, int sampleCount, bool replacing);
    // A raw message of up to 3 bytes; time in samples from the start of the block.
    virtual void ProcessMIDIEvent(int time, const std::uint8_t* bytes);
    void SendNote(int time, int channel, int note, double velocity, bool on);
    virtual void GenerateMIDIEvent(int time, const std::uint8_t* bytes);

    // What the host is told: equals the delay of bypass. Of the last InitProcessing.
    int GetReportedLatency() const { return bypassLatency.load(std::memory_order_relaxed); }
    // Samples that came in and were no finite numbers; each was taken as 0.
    std::int64_t GetNonFiniteInputCount() const { return nonFiniteInputs.load(kRelaxed); }
    // Sub-blocks whose output was not finite; each was silenced and the effect cleared.
    std::int64_t GetClearCount() const { return clears.load(kRelaxed); }

    virtual int GetHostParameterCount();
    int GetParameterCount() const { return automation.ParameterCount(); }
    void SetParameter(int index, double position, bool silent) override;
    // Where the position differs by more than 1e-7.
    virtual void SetParameterIfChanged(int index, double position, bool silent);
    double GetParameter(int index) override;
    MString GetParameterName(int index) override;
    virtual MString GetParameterShortName(int index);
    virtual MString GetParameterDescription(int index);
    MString GetParameterSection(int index) override;
    MString GetParameterNameWithoutSection(int index) override;
    MString GetParameterID(int index) override;
    // The index of the parameter with that identifier; -1 where there is none.
    int FindParameter(const MString& identifier);
    MString GetParameterValueName(int index) override;
    MString GetParameterValueNameFrom01(int index, double position) override;
    bool ParseParameterValueName(int index, const MString& text) override;
    // As that, but answers the position and sets nothing; without one, position stays as it was.
    bool ParsePositionFromText(int index, const MString& text, double& position);
    MString GetParameterUnitsName(int index) override;
    virtual bool IsParameterDiscrete(int index);
    ParameterType GetParameterType(int index) override;
    double GetParameterDefaultValue(int index) override;
    virtual bool IsParameterAvailable(int index);
    // Whether a host may record it.
    bool IsParameterAutomatable(int index) const;
    // Something was changed by the plug-in itself: tells the host.
    virtual void ParameterChanged(int index);
    void SendAutomation(int index, double position) override;
    // Something that is no parameter was changed by the plug-in itself, or values that were not
    // told one by one: tells the host. Not on the audio thread and under no lock.
    void StateChanged();

    // Behind any change of the list of adapters; see AutomationTable. While nothing is processed.
    void RebuildAutomationTable();
    void ClearAutomationAdapters();
    void DestroyTemporaryAutomationAdapters();
    // On any thread: the adapter's UpdateEditor is called on the user-interface thread soon.
    void NeedUpdateEditor(AutomationAdapter& adapter) override;

    // What a song or preset keeps of the plug-in, in either direction; whether it went through. A
    // load keeps the audio path silent meanwhile and ends in InitProcessing and
    // ActualiseAfterLoading. Parameters are stored silently: the host is not told. Under no lock.
    bool Store(const MStoreVisitor& visitor);
    // Behind a load, on the thread that loads, under no lock.
    virtual void ActualiseAfterLoading();

    // The settings of all plug-ins of the user, in an item of their configuration. The first one
    // before the list of adapters is built.
    void LoadDefaultSettings(MAttribute& configuration);
    void SetDefaultSettingsToCurrent(MAttribute& configuration);
    // That item, a new one where there is none.
    static MAttribute& DefaultSettingsOf(MAttribute& configuration);
    // What the editor is to be handled with.
    enum class EditorMode { Mouse, Tablet };
    EditorMode GetEditorMode();

    virtual int GetProcessingInputChannels();
    virtual int GetProcessingOutputChannels();
    virtual int GetHostInputChannels();
    virtual int GetHostOutputChannels();
    // How many channels of a bus the last InitProcessing found to be written by ProcessAudio.
    int GetServedOutputChannels() const { return hostOutputs.load(kRelaxed); }
    virtual int GetInputBusCount();
    virtual int GetOutputBusCount();
    virtual void SetProgramName(const MString& name);
    virtual void UpdateEditor() = 0;
    // In samples at the processing rate.
    virtual int GetLatency();
    virtual int GetTailLength();  // -1: unknown
    // The same in samples of the host. Takes processLock.
    int GetReportedTailLength();
    // Tells the host. Not on the audio thread and under no lock.
    virtual void LatencyChanged();
    // Outputs of an upsampled block are limited to it; below 0: no limit.
    virtual double GetOutputClipLevel();
    // The work of an open editor's idle time.
    virtual void ProcessUpdate() = 0;

    // Makes the editor in the host's window, where there is none. False where it can't be had.
    bool CreateEditor(void* parent, MStyle* style);
    void DestroyEditor();
    // False where the host does not agree.
    virtual bool ChangeEditorSize(EditorSize size);
    virtual void SetEditorResizable(bool resizable);
    virtual bool InitializeGUI();
    virtual MEditor* CreateEditorObject(void* parent, MStyle* style);
    // Fills the new editor with its controls.
    virtual void BuildEditor() = 0;
    // Forgets every pointer into the editor.
    virtual void EditorDestroyed() = 0;

    // The transport, filled by the host adapter before each block.
    double tempo = 120;   // beats a minute
    double position = 0;  // quarter notes from the song's start
    double barStart = 0;  // quarter notes at the last bar line
    int timeSigNumerator = 4;
    int timeSigDenominator = 4;
    std::atomic<std::int32_t> sampleRate = kDefaultSampleRate;  // hertz, upsampling included
    double cycleStart = -1;                                     // quarter notes; -1 without a cycle
    double cycleEnd = -1;
    bool playing = false;
    bool positionJumped = false;  // the position left its expected course
    bool playingChanged = false;
    std::array<std::uint8_t, 2> transportValid{};

    // Fixed before processing starts.
    bool receivesMIDI = false;
    bool sendsMIDI = false;
    bool accumulatesOutput = false;  // Process adds to its outputs
    bool noInPlace = false;          // Process never sees one buffer as input and output
    bool usesHostTime = true;        // else sub-blocks see position 0
    bool hasEditor = false;
    bool automationCompatibility = true;  // order of the parameters, see AutomationTable
    int channelsPerBus = 2;
    MString hostTag;                         // the interfaces through which a host uses it
    std::vector<MString> inputChannelNames;  // one per pin of the host
    std::vector<MString> outputChannelNames;
    MAudioPluginAdapter* hostAdapter = nullptr;  // not owned; null while there is none
    MEditorFactory* editorFactory = nullptr;     // not owned; null where there are no editors

    // Requests, taken over by InitProcessing.
    std::atomic<std::uint8_t> hqUpsampling = 1;
    std::atomic<std::uint8_t> agcEnabled = 0;
    std::atomic<std::int32_t> channelModeRequested = kModeLeftRight;
    std::array<std::atomic<std::uint8_t>, kChannelStride> surroundRequested{1, 1, 1, 1, 1, 1, 1, 1};

    std::atomic<std::uint8_t> bypassed = 0;
    std::atomic<std::int32_t> processingDisabled = 0;  // above 0: silence, no lock is taken

    MLock stateLock;    // structure and presets; before processLock
    MLock processLock;  // processing and whatever it uses

protected:
    static constexpr int kDefaultSampleRate = 44100;
    static constexpr int kNoLimit = std::numeric_limits<int>::max();
    static constexpr std::memory_order kRelaxed = std::memory_order_relaxed;

    // The effect's work on one sub-block. Any sampleCount from 1 on.
    virtual void Process(float** inputs, float** outputs, int sampleCount) = 0;
    // Passes a channel that is not processed through whatever filters the others went through.
    virtual void ProcessBypassed(float* buffer, int sampleCount, int channel) = 0;
    // Once per host block: before all, after all, and before the first Process.
    virtual void PrepareBlock(float** inputs, float** outputs, int sampleCount, bool replacing) = 0;
    virtual void FinishBlock(float** inputs, float** outputs, int sampleCount, bool replacing) = 0;
    virtual void PrepareForProcessingOnce(float** inputs, float** outputs) = 0;
    // Makes the effect as good as new after it went wrong, on the audio thread.
    virtual void ClearEffect() = 0;
    virtual std::unique_ptr<MUpsampler> CreateUpsampler();

    // Of Store: under stateLock, a load under processLock too. All of it, which is the following
    // two, one behind the other. The general settings are the channel mode and the bypass here; who
    // has others of them writes those among the two. StoreSettings, nothing here, is for the
    // effect's and all that moves it.
    virtual void StoreWhole(const MStoreVisitor& visitor);
    virtual void StoreGeneralSettings(const MStoreVisitor& visitor);
    virtual void StoreSettings(const MStoreVisitor& visitor);
    void StoreChannelMode(const MStoreVisitor& visitor);
    void StoreBypass(const MStoreVisitor& visitor);
    // Of the default settings, under stateLock: the order of parameters and the editor's mode here.
    virtual void StoreDefaultSettings(const MStoreVisitor& visitor);

    // The part of InitProcessing under both locks, and the one behind them. Who extends
    // InitProcessing calls the first where it holds the locks and the second where it does not.
    void InitProcessingLocked();
    void TellLatencyIfChanged();
    // The largest sub-block that is prepared for, in samples at the processing rate; 0 where the
    // host has announced none.
    int LargestSubBlock() const { return announcedBlockSize * upsampling; }

    // Under processLock: SetUpsampling without the InitProcessing, which has to come behind it.
    // Whether the factor is another one than before.
    bool TakeUpsampling(int factor);

    // Under processLock, from here on.
    int blockLimit = kNoLimit;     // largest sub-block while something needs it
    int interpolationLimit = 256;  // sub-block while automation moves
    int upsampling = 1;            // factor on the sample rate
    int hostSampleRate = kDefaultSampleRate;
    int processingInputs = 0;  // answers of the channel queries
    int processingOutputs = 0;
    int hostInputs = 0;
    std::atomic<std::int32_t> hostOutputs = 0;  // also read without a lock
    int channelModeActive = kModeLeftRight;
    std::array<bool, kChannelStride> surroundActive{true, true, true, true, true, true, true, true};
    int surroundCount = kChannelStride;
    int maxProcessingChannels = 2;
    int maxHostChannels = 2;
    int connectedInputs = -1;
    int connectedOutputs = -1;
    int connectedChannels = -1;  // the larger of the two
    bool agcActive = false;
    MGainCompensator gainCompensation;
    AutomationTable automation{*this};

    MEditor* editor = nullptr;  // under stateLock; null while closed
    bool editorResizable = false;
    bool tabletMode = false;  // under stateLock

private:
    friend class AutomationUpdateRequestThread;

    using Queue = MArrayQueue<float>;
    struct Routing;

    // Of ProcessAudio, in order.
    bool RepairBuffers(float** inputs, float** outputs, int sampleCount);
    void FixAudioBuffers(float** buffers, int connected, int busCount, bool isInput,
                         int sampleCount);
    void GuardInputs(float** inputs, int sampleCount);
    void KeepBypassFed(float* const* inputs, int sampleCount);
    void ProcessBlock(float** inputs, float** outputs, int sampleCount, bool replacing);
    void ProcessAccumulating(float** inputs, float** outputs, int sampleCount);
    float** ProcessReplacing(float** inputs, float** outputs, int sampleCount);
    float** ProcessUpsampled(float** inputs, float** outputs, int sampleCount, bool replacing);
    void FeedUpsamplers(float* const* inputs, int sampleCount);
    void ProcessBypass(float** inputs, float** outputs, int sampleCount, bool replacing);
    void PassBypass(float* const* inputs, float* const* outputs, int sampleCount);

    // Of PerformProcess.
    void PerformProcess(float** inputs, float** outputs, int sampleCount);
    void RoutePairs(Routing& routing, int sampleCount);
    void UnroutePairs(Routing& routing, int sampleCount);
    void RouteSurround(Routing& routing, int sampleCount);
    void FillUnprocessed(const Routing& routing, int bus, int sampleCount);
    void PassUnprocessed(const float* input, float* output, int slot, int sampleCount);
    void PassDelayed(const float* input, float* output, int slot, int sampleCount);
    void RunBlock(float** inputs, float** outputs, int sampleCount);
    void RunSubBlocks(float** inputs, float** outputs, int sampleCount, int limit, bool moving);
    void RunProcess(float** inputs, float** outputs, int sampleCount);

    bool InterpolationPrepare(int sampleCount);
    void InterpolationProcess(int sampleCount);
    void InterpolationFinish();

    // Of InitProcessing, in order.
    void TakeChannelMode();
    void TakeChannelCounts();
    void PrepareUpsamplers();
    void PrepareModeDelays();
    void PrepareBypassDelays();
    void PrepareBuffers();
    int ComputeLatency();

    void Load(const MStoreVisitor& visitor);
    int LoadOldSurround(const MStoreVisitor& visitor, int mode) const;
    void StoreSurroundChannels(const MStoreVisitor& visitor);

    void FillEditor();

    int LargerBusCount() { return std::max(GetInputBusCount(), GetOutputBusCount()); }
    int LargerHostCount() const { return std::max(hostInputs, hostOutputs.load(kRelaxed)); }
    int ConnectedCount() const {
        return connectedChannels < 0 ? channelsPerBus : connectedChannels;
    }
    void PointTemporaries(ChannelPointers& pointers, int channels, int sampleCount);
    MUpsampler& UpsamplerAt(int slot);

    template <typename Neutral, typename Call>
    Neutral AskAdapter(const char* trace, Neutral neutral, int index, Call call) const;

    std::array<std::unique_ptr<MUpsampler>, kChannelSlots> upsamplers;
    std::array<Queue, kChannelSlots> bypassDelays;  // each holds bypassLatency samples
    std::array<Queue, kChannelSlots> modeDelays;    // of channels that a mode leaves out
    std::array<GrowingBuffer<float>, kChannelSlots> temporaryBuffers;
    ChannelPointers temporaryInputs{};
    ChannelPointers temporaryOutputs{};
    GrowingBuffer<float> silenceInput;   // stands for missing host channels
    GrowingBuffer<float> scratchOutput;  // the same; never read
    int modeLatency = 0;
    std::atomic<std::int32_t> announcedBlockSize = 0;
    std::atomic<std::int32_t> bypassLatency = 0;
    std::atomic<std::int32_t> toldLatency = 0;

    std::atomic<std::int64_t> nonFiniteInputs = 0;
    std::atomic<std::int64_t> clears = 0;

    std::unique_ptr<AutomationUpdateRequestThread> automationRequestThread;  // from an editor on
};
