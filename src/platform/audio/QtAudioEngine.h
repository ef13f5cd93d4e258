#pragma once
// Playthrough on Qt Multimedia: the recording device's blocks go straight into a push stream
// on the output device, on the program's own event loop. Devices are the ones the system's
// sound server lists (PulseAudio here), in its order.
#include <QAudioDevice>
#include <QAudioFormat>
#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <memory>

#include "ports/AudioEngine.h"

class QAudioSource;
class QAudioSink;
class QIODevice;
class QMediaDevices;

namespace tlx {

class QtAudioEngine : public QObject, public AudioEngine {
    Q_OBJECT
public:
    // How much the output may hold ahead of the speaker, and the recording's block size.
    static constexpr int kSinkBufferMs = 60;
    static constexpr int kSourceBufferMs = 20;
    static constexpr int kWatchMs = 250;
    static constexpr int kFeedMs = 5;

    QtAudioEngine();
    ~QtAudioEngine() override;

    std::vector<AudioDeviceInfo> recordDevices() override;
    std::vector<AudioDeviceInfo> playbackDevices() override;
    bool init(int device, int frequency) override;
    bool recordInit(int device) override;
    std::vector<std::string> recordInputNames() override;
    std::optional<double> recordGetInput(int input) override;
    bool recordSetInput(int input, double level) override;
    bool streamCreate(int frequency, int channels) override;
    bool recordStart(int frequency, int channels) override;
    bool channelPlay() override;
    double getVolume() override;
    bool setVolume(double level) override;
    double cpu() override;
    double channelLevel() override;
    std::int64_t channelBufferedBytes() override;
    std::int64_t channelSeconds2Bytes(double seconds) override;
    void recordFree() override;
    void free() override;
    int errorGetCode() override { return error_; }

private:
    void listen();
    bool fail(int code);
    void pull();
    void push();
    void devicesChanged();
    void stopped(int code);
    static QAudioFormat format(int frequency, int channels);

    std::unique_ptr<QMediaDevices> devices_;
    int error_ = AudioErrorCode::Ok;
    bool outputOpen_ = false, inputOpen_ = false;
    QAudioDevice output_, input_;
    QAudioFormat streamFormat_;
    std::unique_ptr<QAudioSink> sink_;
    std::unique_ptr<QAudioSource> source_;
    QIODevice* sinkIo_ = nullptr;
    QIODevice* sourceIo_ = nullptr;
    QByteArray pending_;  // recorded, not yet taken by the output
    double inputVolume_ = 1.0, outputVolume_ = 1.0;
    double level_ = 0.0;
    // The share of time spent moving blocks, over the last second or so.
    QElapsedTimer wall_;
    qint64 busyNs_ = 0;
    double cpu_ = 0.0;
    bool failing_ = false;
    bool reported_ = false;  // the stop is told once per playthrough
    // The device lists are looked at while playthrough runs: the server's change signals do
    // not always reach the lists' owner.
    QTimer watch_;
    // The output takes what it has room for between recorded blocks too.
    QTimer feed_;
};

}  // namespace tlx
