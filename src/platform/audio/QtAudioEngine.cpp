#include "platform/audio/QtAudioEngine.h"

#include <QAudioSink>
#include <QAudioSource>
#include <QMediaDevices>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace tlx {

namespace {
int codeOf(QAudio::Error e) {
    switch (e) {
        case QAudio::NoError: return AudioErrorCode::Ok;
        case QAudio::OpenError: return AudioErrorCode::NoFreeDriver;
        case QAudio::IOError: return AudioErrorCode::NotAvailable;
        case QAudio::UnderrunError: return AudioErrorCode::Ok;  // a push stream that ran dry
        case QAudio::FatalError: return AudioErrorCode::Unknown;
    }
    return AudioErrorCode::Unknown;
}

bool listed(const QList<QAudioDevice>& list, const QAudioDevice& d) {
    return std::any_of(list.begin(), list.end(), [&](const QAudioDevice& x) { return x.id() == d.id(); });
}
}  // namespace

QtAudioEngine::QtAudioEngine() {
    watch_.setInterval(kWatchMs);
    connect(&watch_, &QTimer::timeout, this, [this] { devicesChanged(); });
    feed_.setInterval(kFeedMs);
    feed_.setTimerType(Qt::PreciseTimer);
    connect(&feed_, &QTimer::timeout, this, [this] { push(); });
}

QtAudioEngine::~QtAudioEngine() {
    recordFree();
    free();
}

void QtAudioEngine::listen() {
    // The sound server is first asked when playthrough or its devices are wanted: a controller
    // that never plays through never connects to it.
    if (devices_) return;
    devices_ = std::make_unique<QMediaDevices>();
    connect(devices_.get(), &QMediaDevices::audioInputsChanged, this, [this] { devicesChanged(); });
    connect(devices_.get(), &QMediaDevices::audioOutputsChanged, this, [this] { devicesChanged(); });
}

bool QtAudioEngine::fail(int code) {
    error_ = code;
    return false;
}

QAudioFormat QtAudioEngine::format(int frequency, int channels) {
    QAudioFormat f;
    f.setSampleRate(frequency);
    f.setChannelCount(channels);
    f.setSampleFormat(QAudioFormat::Int16);
    return f;
}

std::vector<AudioDeviceInfo> QtAudioEngine::recordDevices() {
    listen();
    std::vector<AudioDeviceInfo> v;
    for (const auto& d : QMediaDevices::audioInputs()) v.push_back({d.description().toStdString(), d.isDefault()});
    error_ = AudioErrorCode::Ok;
    return v;
}

std::vector<AudioDeviceInfo> QtAudioEngine::playbackDevices() {
    listen();
    std::vector<AudioDeviceInfo> v;
    for (const auto& d : QMediaDevices::audioOutputs()) v.push_back({d.description().toStdString(), d.isDefault()});
    error_ = AudioErrorCode::Ok;
    return v;
}

bool QtAudioEngine::init(int device, int frequency) {
    listen();
    if (outputOpen_) return fail(AudioErrorCode::Already);
    if (frequency <= 0) return fail(AudioErrorCode::SampleRate);
    const auto list = QMediaDevices::audioOutputs();
    if (device == -1)
        output_ = QMediaDevices::defaultAudioOutput();
    else if (device >= 0 && device < list.size())
        output_ = list.at(device);
    else
        return fail(AudioErrorCode::Device);
    if (output_.isNull()) return fail(AudioErrorCode::Device);
    outputOpen_ = true;
    error_ = AudioErrorCode::Ok;
    return true;
}

bool QtAudioEngine::recordInit(int device) {
    listen();
    if (inputOpen_) return fail(AudioErrorCode::Already);
    const auto list = QMediaDevices::audioInputs();
    if (device == -1)
        input_ = QMediaDevices::defaultAudioInput();
    else if (device >= 0 && device < list.size())
        input_ = list.at(device);
    else
        return fail(AudioErrorCode::Device);
    if (input_.isNull()) return fail(AudioErrorCode::Device);
    inputOpen_ = true;
    error_ = AudioErrorCode::Ok;
    return true;
}

// The sound server offers one level per recording device: its master input.
std::vector<std::string> QtAudioEngine::recordInputNames() { return {}; }

std::optional<double> QtAudioEngine::recordGetInput(int input) {
    if (!inputOpen_) {
        fail(AudioErrorCode::NotInitialised);
        return std::nullopt;
    }
    if (input != -1) {
        fail(AudioErrorCode::IllegalParameter);
        return std::nullopt;
    }
    error_ = AudioErrorCode::Ok;
    return source_ ? source_->volume() : inputVolume_;
}

bool QtAudioEngine::recordSetInput(int input, double level) {
    if (!inputOpen_) return fail(AudioErrorCode::NotInitialised);
    if (input != -1 || level < 0.0 || level > 1.0) return fail(AudioErrorCode::IllegalParameter);
    inputVolume_ = level;
    if (source_) source_->setVolume(level);
    error_ = AudioErrorCode::Ok;
    return true;
}

bool QtAudioEngine::streamCreate(int frequency, int channels) {
    if (!outputOpen_) return fail(AudioErrorCode::NotInitialised);
    if (sink_) return fail(AudioErrorCode::Already);
    if (frequency <= 0) return fail(AudioErrorCode::SampleRate);
    const QAudioFormat f = format(frequency, channels);
    if (channels < 1 || !output_.isFormatSupported(f)) return fail(AudioErrorCode::Format);
    streamFormat_ = f;
    reported_ = false;
    sink_ = std::make_unique<QAudioSink>(output_, f);
    sink_->setBufferSize(f.bytesForDuration(kSinkBufferMs * 1000));
    sink_->setVolume(outputVolume_);
    connect(sink_.get(), &QAudioSink::stateChanged, this, [this](QAudio::State s) {
        if (s == QAudio::StoppedState && sink_ && codeOf(sink_->error()) != AudioErrorCode::Ok)
            stopped(codeOf(sink_->error()));
    });
    error_ = AudioErrorCode::Ok;
    return true;
}

bool QtAudioEngine::recordStart(int frequency, int channels) {
    if (!inputOpen_) return fail(AudioErrorCode::NotInitialised);
    if (source_) return fail(AudioErrorCode::Already);
    if (frequency <= 0) return fail(AudioErrorCode::SampleRate);
    const QAudioFormat f = format(frequency, channels);
    if (channels < 1 || !input_.isFormatSupported(f)) return fail(AudioErrorCode::Format);
    reported_ = false;
    source_ = std::make_unique<QAudioSource>(input_, f);
    source_->setBufferSize(f.bytesForDuration(kSourceBufferMs * 1000));
    source_->setVolume(inputVolume_);
    sourceIo_ = source_->start();
    if (!sourceIo_ || codeOf(source_->error()) != AudioErrorCode::Ok) {
        const int code = source_->error() == QAudio::NoError ? AudioErrorCode::NoFreeDriver : codeOf(source_->error());
        source_.reset();
        sourceIo_ = nullptr;
        return fail(code);
    }
    connect(sourceIo_, &QIODevice::readyRead, this, [this] { pull(); });
    connect(source_.get(), &QAudioSource::stateChanged, this, [this](QAudio::State s) {
        if (s == QAudio::StoppedState && source_ && codeOf(source_->error()) != AudioErrorCode::Ok)
            stopped(codeOf(source_->error()));
    });
    wall_.start();
    busyNs_ = 0;
    watch_.start();
    error_ = AudioErrorCode::Ok;
    return true;
}

bool QtAudioEngine::channelPlay() {
    if (!sink_) return fail(AudioErrorCode::Handle);
    if (!sinkIo_) {
        sinkIo_ = sink_->start();
        if (!sinkIo_ || codeOf(sink_->error()) != AudioErrorCode::Ok) {
            const int code = sink_->error() == QAudio::NoError ? AudioErrorCode::NoFreeDriver : codeOf(sink_->error());
            sinkIo_ = nullptr;
            return fail(code);
        }
    }
    error_ = AudioErrorCode::Ok;
    watch_.start();
    feed_.start();
    push();
    return true;
}

double QtAudioEngine::getVolume() { return sink_ ? sink_->volume() : outputVolume_; }

bool QtAudioEngine::setVolume(double level) {
    if (level < 0.0 || level > 1.0) return fail(AudioErrorCode::IllegalParameter);
    outputVolume_ = level;
    if (sink_) sink_->setVolume(level);
    error_ = AudioErrorCode::Ok;
    return true;
}

double QtAudioEngine::cpu() { return cpu_; }

double QtAudioEngine::channelLevel() { return level_; }

std::int64_t QtAudioEngine::channelBufferedBytes() {
    std::int64_t held = pending_.size();
    if (sink_ && sinkIo_) held += std::max<qsizetype>(0, sink_->bufferSize() - sink_->bytesFree());
    return held;
}

std::int64_t QtAudioEngine::channelSeconds2Bytes(double seconds) {
    const QAudioFormat f = streamFormat_.isValid() ? streamFormat_ : format(44100, 2);
    return static_cast<std::int64_t>(std::llround(seconds * f.sampleRate())) * f.bytesPerFrame();
}

void QtAudioEngine::pull() {
    if (!sourceIo_) return;
    QElapsedTimer busy;
    busy.start();
    const QByteArray block = sourceIo_->readAll();
    if (!block.isEmpty()) {
        // The block's peak, for the level meter.
        const auto* samples = reinterpret_cast<const qint16*>(block.constData());
        const qsizetype count = block.size() / static_cast<qsizetype>(sizeof(qint16));
        int peak = 0;
        for (qsizetype i = 0; i < count; ++i) peak = std::max(peak, std::abs(static_cast<int>(samples[i])));
        level_ = peak / 32768.0;
        if (onBlock) onBlock(static_cast<std::size_t>(block.size()), block.constData());
        pending_.append(block);
        push();
    }
    busyNs_ += busy.nsecsElapsed();
    const qint64 wallNs = wall_.nsecsElapsed();
    if (wallNs >= 1000000000LL) {
        cpu_ = 100.0 * static_cast<double>(busyNs_) / static_cast<double>(wallNs);
        busyNs_ = 0;
        wall_.restart();
    }
}

void QtAudioEngine::push() {
    if (!sink_ || !sinkIo_ || pending_.isEmpty()) return;
    const qsizetype room = std::min<qsizetype>(sink_->bytesFree(), pending_.size());
    const qsizetype frame = streamFormat_.bytesPerFrame() > 0 ? streamFormat_.bytesPerFrame() : 4;
    const qsizetype take = room - room % frame;
    if (take <= 0) return;
    const qint64 written = sinkIo_->write(pending_.constData(), take);
    if (written > 0) pending_.remove(0, written);
}

void QtAudioEngine::devicesChanged() {
    if (failing_) return;
    if (inputOpen_ && source_ && !listed(QMediaDevices::audioInputs(), input_))
        stopped(AudioErrorCode::Device);
    else if (outputOpen_ && sink_ && !listed(QMediaDevices::audioOutputs(), output_))
        stopped(AudioErrorCode::Device);
}

void QtAudioEngine::stopped(int code) {
    if (failing_ || reported_) return;
    failing_ = reported_ = true;
    watch_.stop();
    error_ = code;
    if (onFailure) onFailure(code);
    failing_ = false;
}

void QtAudioEngine::recordFree() {
    if (!sink_) watch_.stop();
    if (source_) {
        disconnect(source_.get(), nullptr, this, nullptr);
        if (sourceIo_) disconnect(sourceIo_, nullptr, this, nullptr);
        source_->stop();
        source_.reset();
    }
    sourceIo_ = nullptr;
    inputOpen_ = false;
    input_ = QAudioDevice();
    level_ = 0.0;
    cpu_ = 0.0;
}

void QtAudioEngine::free() {
    if (!source_) watch_.stop();
    feed_.stop();
    if (sink_) {
        disconnect(sink_.get(), nullptr, this, nullptr);
        sink_->stop();
        sink_.reset();
    }
    sinkIo_ = nullptr;
    outputOpen_ = false;
    output_ = QAudioDevice();
    pending_.clear();
    streamFormat_ = QAudioFormat();
}

}  // namespace tlx
