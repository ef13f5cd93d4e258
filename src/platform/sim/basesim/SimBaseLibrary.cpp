#include "platform/sim/basesim/SimBaseLibrary.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "core/Text.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace {

bool allDigits(const std::string& s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
}

std::string digitsOf(const std::string& s) {
    std::string d;
    for (char c : s)
        if (std::isdigit(static_cast<unsigned char>(c))) d += c;
    const auto nz = d.find_first_not_of('0');
    return nz == std::string::npos ? (d.empty() ? "" : "0") : d.substr(nz);
}

// Key bits of a single-digit vote, as the keypads know them.
int keyBitOf(int key) {
    static const int bits[14] = {1024, 1, 2, 4, 8, 16, 32, 64, 128, 256, 2048, 512, 0, 0};
    return key >= 0 && key < 14 ? bits[key] : 0;
}

constexpr int kWithdrawKey = 11;

// "ddd ddd ddd ddd": a USB base's serial number as the library takes it.
bool usbForm(const std::string& c) {
    if (c.size() != 15) return false;
    for (std::size_t i = 0; i < c.size(); ++i)
        if (i % 4 == 3 ? c[i] != ' ' : !std::isdigit(static_cast<unsigned char>(c[i]))) return false;
    return true;
}

// Whether a keypad lets these keys through for the open vote.
bool accepts(const KelvarinVote& v, const std::string& keys, bool isText) {
    if (keys.empty()) return false;
    switch (v.VoteType) {
        case 9: {  // single digit
            if (isText) return false;
            int key = -1;
            if (v.DisplayLetters && keys.size() == 1 && keys[0] >= 'A' && keys[0] <= 'I')
                key = keys[0] - 'A' + 1;
            else if (allDigits(keys) && keys.size() <= 2)
                key = std::stoi(keys);
            if (key < 0 || key > 13) return false;
            return v.KeyMask == 0 || (v.KeyMask & keyBitOf(key)) != 0;
        }
        case 14:  // single item
            return !isText && allDigits(keys) && keys.size() <= 2 && std::stoi(keys) <= 13;
        case 11: {  // numeric or fractional
            if (isText) return false;
            int dots = 0;
            for (char c : keys) {
                if (c == '.')
                    ++dots;
                else if (!std::isdigit(static_cast<unsigned char>(c)))
                    return false;
            }
            return dots == 0 || (dots == 1 && v.AllowFraction && keys.size() > 1);
        }
        case 2:
        case 7:
        case 8:
        case 12:
            return true;
        default:
            return !isText;
    }
}

}  // namespace

// ---- the station ----

std::string SimBaseStation::port() const {
    return oldest() ? numText(setup.serialPort) : setup.id;
}

bool SimBaseStation::oldest() const { return setup.connection == SimConnection::Serial; }

SimKeypad* SimBaseStation::keypadBySid(int sid) {
    for (auto& k : setup.keypads)
        if (k.sid == sid) return &k;
    return nullptr;
}

SimKeypad* SimBaseStation::keypadByHid(const std::string& hid) {
    const std::string d = digitsOf(hid);
    for (auto& k : setup.keypads)
        if (digitsOf(k.hid) == d) return &k;
    return nullptr;
}

std::string SimBaseStation::registryText() const {
    std::vector<std::string> items;
    for (const auto& k : setup.keypads) items.push_back(k.hid + ";" + numText(k.sid));
    return join(items, "|");
}

int SimBaseSpec::noiseOn(int channel) const {
    const auto it = channelNoise.find(channel);
    return std::clamp(it == channelNoise.end() ? noise : it->second, 0, 100);
}

int SimBaseStation::callCount(const std::string& operation) const {
    auto it = calls_.find(operation);
    return it == calls_.end() ? 0 : it->second;
}

// ---- base objects ----

class SimKelvarinBase : public KelvarinBase {
public:
    explicit SimKelvarinBase(SimBaseLibrary& lib) : lib_(lib) {}
    ~SimKelvarinBase() override { detach(); }

    void detach() {
        if (!st_) return;
        auto& h = st_->handles_;
        h.erase(std::remove(h.begin(), h.end(), this), h.end());
        st_ = nullptr;
    }

    int GetUSBDevices(std::string& list) override {
        std::vector<std::string> ids;
        for (auto& s : lib_.stations_)
            if (s->setup.connection == SimConnection::Usb && s->linkUp) ids.push_back(s->setup.id);
        if (!lib_.extraUsb_.empty()) ids.push_back(lib_.extraUsb_);
        list = join(ids, "|");
        return BaseErrorCode::Success;
    }
    int GetEthernetDevices(std::string& list) override {
        std::vector<std::string> items;
        for (auto& s : lib_.stations_)
            if (s->setup.connection == SimConnection::Ethernet && s->linkUp)
                items.push_back(s->setup.id + ";" + s->setup.address);
        if (!lib_.extraEthernet_.empty()) items.push_back(lib_.extraEthernet_);
        list = join(items, "|");
        return BaseErrorCode::Success;
    }
    int Connect(const std::string& connection) override {
        // Only the library's own forms connect: "000 000 000 000" and "address|2020|1010".
        SimBaseStation* found = nullptr;
        if (contains(connection, "|")) {
            const auto f = split(connection, "|");
            if (f.size() != 3 || f[1] != "2020" || f[2] != "1010" || f[0].empty()) return BaseErrorCode::BaseNotFound;
            for (auto& s : lib_.stations_)
                if (s->setup.connection == SimConnection::Ethernet && s->setup.address == f[0]) found = s.get();
        } else {
            if (!usbForm(connection)) return BaseErrorCode::BaseNotFound;
            const std::string id = digitsOf(connection);
            for (auto& s : lib_.stations_)
                if (s->setup.connection == SimConnection::Usb && digitsOf(s->setup.id) == id) found = s.get();
        }
        if (!found || !found->linkUp) return BaseErrorCode::BaseNotFound;
        if (const int rc = lib_.enter(found, "Connect")) return rc;
        detach();
        st_ = found;
        st_->handles_.push_back(this);
        return BaseErrorCode::Success;
    }
    int Disconnect() override {
        detach();
        return BaseErrorCode::Success;
    }

    int GetBaseConfig(KelvarinBaseConfig& c) override {
        return run("GetBaseConfig", [&](SimBaseStation& s) {
            c.BaseName = s.setup.type;
            c.BaseID = s.setup.id;
            c.FirmwareVersion = s.setup.firmware;
            c.RadioChannel = s.setup.session.PrimaryChannel;
            if (s.staticLowSid >= 0) {
                c.RegistryLowSID = s.staticLowSid;
                c.RegistryHighSID = s.staticHighSid;
            } else {
                int lo = 0, hi = 0;
                for (const auto& k : s.setup.keypads) {
                    if (k.sid <= 0) continue;
                    lo = lo == 0 ? k.sid : std::min(lo, k.sid);
                    hi = std::max(hi, k.sid);
                }
                c.RegistryLowSID = lo;
                c.RegistryHighSID = hi;
            }
            return 0;
        });
    }
    int SetBaseConfig(const KelvarinBaseConfig& c) override {
        return run("SetBaseConfig", [&](SimBaseStation& s) {
            s.staticLowSid = c.RegistryLowSID;
            s.staticHighSid = c.RegistryHighSID;
            s.setup.session.PrimaryChannel = c.RadioChannel;
            return 0;
        });
    }
    int GetSessionConfig(KelvarinSessionConfig& c) override {
        return run("GetSessionConfig", [&](SimBaseStation& s) {
            c = s.setup.session;
            return 0;
        });
    }
    int SetSessionConfig(const KelvarinSessionConfig& c) override {
        return run("SetSessionConfig", [&](SimBaseStation& s) {
            const bool opening = c.RegistrationOpen && !s.setup.session.RegistrationOpen;
            s.setup.session = c;
            if (opening) {  // the registered devices in the room answer the programming, in turn
                int at = lib_.eventDelayMs;
                for (const auto& k : s.setup.keypads) {
                    if (!k.present) continue;
                    const std::string hid = k.hid;
                    const int kind = k.kind;
                    const std::string firmware = k.firmwareVersion();
                    lib_.toHandles(s, at, [hid, kind, firmware](SimKelvarinBase& h) {
                        h.KeypadRegister(hid, kind, 0, firmware);
                    });
                    at += lib_.eventDelayMs;
                }
            }
            return 0;
        });
    }
    int RadioEnable(bool enable) override {
        return run("RadioEnable", [&](SimBaseStation& s) {
            const bool was = s.radioOn;
            s.radioOn = enable;
            if (enable && !was)  // presenter and scanner devices announce themselves
                for (const auto& k : s.setup.keypads) {
                    if (k.kind == DeviceKind::Keypad || !k.present) continue;
                    const std::string hid = k.hid;
                    const int kind = k.kind;
                    const std::string firmware = k.firmwareVersion();
                    lib_.toHandles(s, lib_.eventDelayMs, [hid, kind, firmware](SimKelvarinBase& h) {
                        h.KeypadRegister(hid, kind, 0, firmware);
                    });
                }
            return 0;
        });
    }
    int RadioStatus(int& status) override {
        return run("RadioStatus", [&](SimBaseStation& s) {
            status = s.radioOn ? 1 : 0;
            return 0;
        });
    }
    int ResetBase() override {
        return run("ResetBase", [&](SimBaseStation& s) {
            s.setup.session = KelvarinSessionConfig{};
            s.voteOpen = s.votePrepared = false;
            return 0;
        });
    }
    int RebootRadio() override { return run("RebootRadio", [](SimBaseStation&) { return 0; }); }

    int GetKeypadConfig(const std::string& hid, KelvarinKeypadConfig& c) override {
        return run("GetKeypadConfig", [&](SimBaseStation& s) {
            SimKeypad* k = s.keypadByHid(hid);
            if (!k) return BaseErrorCode::RegistryDeviceNotFound;
            c = config(*k);
            const KelvarinKeypadConfig copy = c;
            lib_.toHandles(s, lib_.eventDelayMs, [copy](SimKelvarinBase& h) { h.KeypadConfig(copy); });
            return 0;
        });
    }
    int SetKeypadConfig(const KelvarinKeypadConfig& c) override {
        return run("SetKeypadConfig", [&](SimBaseStation& s) {
            SimKeypad* k = s.keypadByHid(c.HID);
            if (!k) return BaseErrorCode::RegistryDeviceNotFound;
            if (c.SID > 0) k->sid = c.SID;
            return 0;
        });
    }
    int GetRegistry(std::string& registry) override {
        return run("GetRegistry", [&](SimBaseStation& s) {
            registry = s.registryText();
            return 0;
        });
    }
    int GetKeypadFromRegistry(int sid, KelvarinKeypadConfig& c) override {
        return run("GetKeypadFromRegistry", [&](SimBaseStation& s) {
            SimKeypad* k = s.keypadBySid(sid);
            if (!k) return BaseErrorCode::RegistryDeviceNotFound;
            c = config(*k);
            return 0;
        });
    }
    int AddKeypadToRegistry(const std::string& hid, int sid) override {
        return run("AddKeypadToRegistry", [&](SimBaseStation& s) {
            if (s.setup.session.RegistryMode == 0) return BaseErrorCode::RegistryModeFixed;
            if (SimKeypad* k = s.keypadByHid(hid)) {
                k->sid = sid;
                return 0;
            }
            // A spare device in the room joins the registry; any other number is an entry
            // with no device behind it.
            auto& spares = s.setup.spares;
            const std::string d = digitsOf(hid);
            const auto spare =
                std::find_if(spares.begin(), spares.end(), [&](const SimKeypad& k) { return digitsOf(k.hid) == d; });
            SimKeypad k;
            if (spare != spares.end()) {
                k = *spare;
                spares.erase(spare);
            } else {
                k.hid = d;
                k.present = false;
            }
            k.sid = sid;
            s.setup.keypads.push_back(k);
            return 0;
        });
    }
    int DeleteKeypadFromRegistry(const std::string& hid) override {
        return run("DeleteKeypadFromRegistry", [&](SimBaseStation& s) {
            if (s.setup.session.RegistryMode == 0) return BaseErrorCode::RegistryModeFixed;
            auto& ks = s.setup.keypads;
            const std::string d = digitsOf(hid);
            const auto it = std::find_if(ks.begin(), ks.end(), [&](const SimKeypad& k) { return digitsOf(k.hid) == d; });
            if (it == ks.end()) return BaseErrorCode::RegistryDeviceNotFound;
            // A device taken off the registry is still in the room.
            if (it->present) s.setup.spares.push_back(*it);
            ks.erase(it);
            return 0;
        });
    }
    int DeleteRegistry() override {
        return run("DeleteRegistry", [&](SimBaseStation& s) {
            if (s.setup.session.RegistryMode == 0) return BaseErrorCode::RegistryModeFixed;
            s.setup.keypads.clear();
            return 0;
        });
    }
    int UpdateRegistryFlashRIT(const std::string& hid, int) override {
        return run("UpdateRegistryFlashRIT", [&](SimBaseStation& s) {
            return s.keypadByHid(hid) ? 0 : BaseErrorCode::RegistryDeviceNotFound;
        });
    }

    int StartAudio(const std::string& hid, const KelvarinAudioOptions& options) override {
        return run("StartAudio", [&](SimBaseStation& s) {
            SimKeypad* k = s.keypadByHid(hid);
            if (!k) return BaseErrorCode::RegistryDeviceNotFound;
            // One keypad streams at a time: a new turn replaces the one running.
            s.audioHid = k->hid;
            s.audioOptions = options;
            lib_.audioTick(s, ++s.audioRun_, 0);
            return 0;
        });
    }
    int StopAudio() override {
        return run("StopAudio", [&](SimBaseStation& s) {
            ++s.audioRun_;
            s.audioHid.clear();
            lib_.toHandles(s, lib_.eventDelayMs, [](SimKelvarinBase& h) { h.AudioStatus(KelvarinAudioStatus{}); });
            return 0;
        });
    }

    int PrepareKeypadSurveyScan(const std::vector<std::string>& hids, const KelvarinSurveyOptions& o) override {
        return run("PrepareKeypadSurveyScan", [&](SimBaseStation& s) {
            if (hids.empty()) return BaseErrorCode::RegistryNoDataFound;
            for (const auto& h : hids)
                if (!s.keypadByHid(h)) return BaseErrorCode::RegistryDeviceNotFound;
            s.surveyHids_ = hids;
            s.surveyOptions_ = o;
            s.surveyPrepared_ = true;
            return 0;
        });
    }
    int BeginKeypadSurveyScan() override {
        return run("BeginKeypadSurveyScan", [&](SimBaseStation& s) {
            if (!s.surveyPrepared_) return BaseErrorCode::UnknownError;
            s.surveyPrepared_ = false;
            const int runId = ++s.surveyRun_;
            if (s.silent_.count("BeginKeypadSurveyScan")) return 0;
            std::vector<int> channels = s.surveyOptions_.Channels;
            if (channels.empty()) {
                const int step = std::max(1, s.surveyOptions_.ChannelStep);
                for (int c = s.surveyOptions_.StartChannel; c <= s.surveyOptions_.EndChannel && c <= 255; c += step)
                    channels.push_back(c);
            }
            const int votes = std::max(0, s.surveyOptions_.VotesPerChannel);
            const int keypads = static_cast<int>(s.surveyHids_.size());
            const int perChannel = lib_.surveyChannelMs + votes * keypads * lib_.surveyPacketMs;
            int at = 0;
            for (int channel : channels) {
                at += perChannel;
                for (const auto& hid : s.surveyHids_) {
                    // A keypad that is not in the room sends nothing.
                    if (const SimKeypad* k = s.keypadByHid(hid); k && !k->present) continue;
                    KelvarinSurveyReply r;
                    r.HID = hid;
                    r.ChannelIndex = channel;
                    r.VotesSent = votes;
                    // The channel's noise takes its share of the packets, and a few more go
                    // astray at random (up to a twentieth).
                    const int lost = (votes * s.setup.noiseOn(channel) + 50) / 100;
                    const int stray = static_cast<int>(lib_.rng_() % static_cast<unsigned>(votes / 20 + 1));
                    r.Acks = std::max(0, votes - lost - stray);
                    SimBaseStation* st = &s;
                    lib_.toHandles(s, at, [r, st, runId](SimKelvarinBase& h) {
                        if (st->surveyRun_ == runId) h.KeypadSurveyReply(r);
                    });
                }
            }
            KelvarinSurveyReply end;
            end.EndOfScan = true;
            SimBaseStation* st = &s;
            lib_.toHandles(s, at + 50, [end, st, runId](SimKelvarinBase& h) {
                if (st->surveyRun_ == runId) h.KeypadSurveyReply(end);
            });
            return 0;
        });
    }
    int EndKeypadSurveyScan() override {
        return run("EndKeypadSurveyScan", [&](SimBaseStation& s) {
            ++s.surveyRun_;
            s.surveyPrepared_ = false;
            return 0;
        });
    }

    int StartVote(const KelvarinVote& v) override {
        return run("StartVote", [&](SimBaseStation& s) {
            lib_.openVote(s, v);
            return 0;
        });
    }
    int PrepareVote(const KelvarinVote& v) override {
        return run("PrepareVote", [&](SimBaseStation& s) {
            s.preparedVote = v;
            s.votePrepared = true;
            return 0;
        });
    }
    int BeginLiveVote() override {
        return run("BeginLiveVote", [&](SimBaseStation& s) {
            if (!s.votePrepared) return BaseErrorCode::UnknownError;
            s.votePrepared = false;
            lib_.openVote(s, s.preparedVote);
            return 0;
        });
    }
    int PauseVote() override {
        return run("PauseVote", [&](SimBaseStation& s) {
            s.setup.session.VoteAccepting = false;
            return 0;
        });
    }
    int ResumeVote() override {
        return run("ResumeVote", [&](SimBaseStation& s) {
            s.setup.session.VoteAccepting = true;
            return 0;
        });
    }
    int EndVote(const std::string& endedText) override {
        return run("EndVote", [&](SimBaseStation& s) {
            lib_.closeVote(s);
            s.lastEndedText = endedText;
            return 0;
        });
    }

    int GetChannelList(KelvarinChannelList& list) override {
        return run("GetChannelList", [&](SimBaseStation& s) {
            list.Channel = s.setup.session.AltChannels;
            return 0;
        });
    }
    int ChannelScan(int fromChannel, int toChannel, int, int) override {
        return run("ChannelScan", [&](SimBaseStation& s) {
            if (s.silent_.count("ChannelScan")) return 0;
            for (int c = fromChannel; c <= toChannel; ++c) {
                const int clear = 100 - s.setup.noiseOn(c);
                KelvarinChannelScanReply r{c, std::max(0, clear - static_cast<int>(lib_.rng_() % 6))};
                lib_.toHandles(s, lib_.scanReplyDelayMs, [r](SimKelvarinBase& h) { h.KeypadChannelScanReply(r); });
            }
            return 0;
        });
    }

    int ShowWinningKeypad(const std::string& hid, const KelvarinWinnerMessage& m) override {
        return run("ShowWinningKeypad", [&](SimBaseStation& s) {
            SimKeypad* k = s.keypadByHid(hid);
            if (!k) return BaseErrorCode::RegistryDeviceNotFound;
            k->showNow(m.LoadMessage + "|" + m.MainMessage);
            return 0;
        });
    }
    int SetPresenterEchoMessage(const std::string& hid, const std::string& text) override {
        return run("SetPresenterEchoMessage", [&](SimBaseStation& s) {
            SimKeypad* k = s.keypadByHid(hid);
            if (!k) return BaseErrorCode::RegistryDeviceNotFound;
            k->showNow(text);
            s.presenterEcho = text;
            return 0;
        });
    }
    int SetPresenterGotoMenu(const std::string& hid, const std::string& menu) override {
        return run("SetPresenterGotoMenu", [&](SimBaseStation& s) {
            if (!s.keypadByHid(hid)) return BaseErrorCode::RegistryDeviceNotFound;
            s.presenterMenu = menu;
            return 0;
        });
    }
    int SetPresenterMenu(const std::string& hid, const KelvarinPresenterMenu& menu) override {
        return run("SetPresenterMenu", [&](SimBaseStation& s) {
            SimKeypad* k = s.keypadByHid(hid);
            if (!k || k->kind != DeviceKind::Presenter) return BaseErrorCode::RegistryDeviceNotFound;
            s.presenterLabels = menu;
            s.presenterLabelsHid = k->hid;
            return 0;
        });
    }

private:
    template <class F>
    int run(const char* operation, F&& fn) {
        if (const int rc = lib_.enter(st_, operation)) return rc;
        return fn(*st_);
    }
    static KelvarinKeypadConfig config(const SimKeypad& k) {
        KelvarinKeypadConfig c;
        c.HID = k.hid;
        c.SID = k.sid;
        c.Kind = k.kind;
        c.FirmwareVersion = k.firmwareVersion();
        c.BatteryStrength = k.battery;
        c.SignalStrength = k.signal;
        return c;
    }

    SimBaseLibrary& lib_;
    SimBaseStation* st_ = nullptr;
};

// ---- the oldest bases' control ----

class SimVPanel : public KelvarinVPanel {
public:
    explicit SimVPanel(SimBaseLibrary& lib) : lib_(lib) { lib_.panels_.push_back(this); }
    ~SimVPanel() override {
        auto& p = lib_.panels_;
        p.erase(std::remove(p.begin(), p.end(), this), p.end());
    }
    bool hasOpen(int port) const { return std::find(open_.begin(), open_.end(), port) != open_.end(); }

    std::vector<int> AvailablePorts() override {
        std::vector<int> ports;
        for (auto& s : lib_.stations_)
            if (s->oldest() && s->linkUp) ports.push_back(s->setup.serialPort);
        return ports;
    }
    int OpenPort(int port) override {
        SimBaseStation* s = station(port);
        if (!s || !s->linkUp) return BaseErrorCode::BaseNotFound;
        if (const int rc = lib_.enter(s, "OpenPort")) return rc;
        if (!hasOpen(port)) open_.push_back(port);
        return 0;
    }
    int ClosePort(int port) override {
        open_.erase(std::remove(open_.begin(), open_.end(), port), open_.end());
        return 0;
    }
    int StartVote(int port, const KelvarinVote& vote) override {
        SimBaseStation* s = hasOpen(port) ? station(port) : nullptr;
        if (const int rc = lib_.enter(s, "StartVote")) return rc;
        lib_.openVote(*s, vote);
        return 0;
    }
    int EndVote(int port) override {
        SimBaseStation* s = hasOpen(port) ? station(port) : nullptr;
        if (const int rc = lib_.enter(s, "EndVote")) return rc;
        lib_.closeVote(*s);
        return 0;
    }
    int SetDetectMode(int mode) override {
        for (auto& s : lib_.stations_)
            if (s->oldest()) s->detectMode = mode;
        return 0;
    }

private:
    SimBaseStation* station(int port) {
        for (auto& s : lib_.stations_)
            if (s->oldest() && s->setup.serialPort == port) return s.get();
        return nullptr;
    }
    SimBaseLibrary& lib_;
    std::vector<int> open_;
};

// ---- the library ----

SimBaseLibrary::SimBaseLibrary(Scheduler& scheduler, unsigned seed) : scheduler_(scheduler), rng_(seed) {}

SimBaseLibrary::~SimBaseLibrary() {
    for (const auto& [key, id] : pending_) scheduler_.cancel(id);
}

std::unique_ptr<KelvarinBase> SimBaseLibrary::createBase(LibraryGeneration) {
    return std::make_unique<SimKelvarinBase>(*this);
}

std::unique_ptr<KelvarinVPanel> SimBaseLibrary::createVPanel() { return std::make_unique<SimVPanel>(*this); }

SimBaseStation& SimBaseLibrary::addBase(SimBaseSpec setup) {
    if (setup.connection != SimConnection::Serial) setup.id = digitsOf(setup.id);
    stations_.push_back(std::make_unique<SimBaseStation>(std::move(setup)));
    return *stations_.back();
}

SimBaseStation* SimBaseLibrary::find(const std::string& base) {
    const std::string b = trim(base);
    for (auto& s : stations_)
        if (s->port() == b) return s.get();
    const std::string d = digitsOf(b);
    if (d.empty()) return nullptr;
    for (auto& s : stations_)
        if (digitsOf(s->port()) == d) return s.get();
    return nullptr;
}

long long SimBaseLibrary::nowMs() const {
    return static_cast<long long>(std::llround(scheduler_.monotonicSeconds() * 1000.0));
}

void SimBaseLibrary::later(int delayMs, std::function<void()> fn) {
    const std::uint64_t key = ++nextKey_;
    const std::uint64_t id = scheduler_.post(delayMs, [this, key, fn = std::move(fn)] {
        pending_.erase(key);
        fn();
    });
    pending_[key] = id;
}

void SimBaseLibrary::toHandles(SimBaseStation& st, int delayMs, std::function<void(SimKelvarinBase&)> fn) {
    SimBaseStation* s = &st;
    later(delayMs, [s, fn = std::move(fn)] {
        const auto handles = s->handles_;
        for (SimKelvarinBase* h : handles)
            if (std::find(s->handles_.begin(), s->handles_.end(), h) != s->handles_.end()) fn(*h);
    });
}

void SimBaseLibrary::toPanels(SimBaseStation& st, int delayMs, std::function<void(SimVPanel&)> fn) {
    const int port = st.setup.serialPort;
    later(delayMs, [this, port, fn = std::move(fn)] {
        const auto panels = panels_;
        for (SimVPanel* p : panels)
            if (std::find(panels_.begin(), panels_.end(), p) != panels_.end() && p->hasOpen(port)) fn(*p);
    });
}

int SimBaseLibrary::enter(SimBaseStation* st, const char* operation) {
    if (!st) return BaseErrorCode::BaseNotFound;
    ++st->calls_[operation];
    if (auto it = st->failures_.find(operation); it != st->failures_.end()) {
        const int code = it->second.code;
        if (it->second.times > 0 && --it->second.times == 0) st->failures_.erase(it);
        return code;
    }
    if (!st->linkUp) return BaseErrorCode::BaseDisconnected;
    return BaseErrorCode::Success;
}

void SimBaseLibrary::openVote(SimBaseStation& st, const KelvarinVote& vote) {
    st.vote = vote;
    st.voteOpen = true;
    st.setup.session.VoteAccepting = true;
    ++st.voteId;
    st.voteOpenedMs_ = nowMs();
    st.voteClosedMs_ = -1;
    for (auto& k : st.setup.keypads) {
        if (k.kind != DeviceKind::Keypad) continue;
        show(st, k, vote.VoteQuestionText, 0);
        show(st, k, vote.PrevoteText, vote.PrevoteTextTime);
    }
}

void SimBaseLibrary::closeVote(SimBaseStation& st) {
    if (!st.voteOpen) return;
    st.voteOpen = false;
    st.voteClosedMs_ = nowMs();
    for (auto& k : st.setup.keypads)
        if (k.kind == DeviceKind::Keypad) show(st, k, st.vote.VoteEndedText, st.vote.VoteEndedTextTime);
}

void SimBaseLibrary::audioTick(SimBaseStation& st, int run, int elapsed) {
    if (st.audioRun_ != run || st.audioHid.empty()) return;
    const int maxTalk = st.audioOptions.MaxTalkTime;
    if (maxTalk > 0 && elapsed >= maxTalk) {
        st.audioHid.clear();
        toHandles(st, eventDelayMs, [](SimKelvarinBase& h) { h.AudioStatus(KelvarinAudioStatus{}); });
        return;
    }
    const SimKeypad* k = st.keypadByHid(st.audioHid);
    // The link quality wanders a little from second to second.
    const KelvarinAudioStatus status{true, k ? k->signal : 0, 200 - (elapsed % 5) * 4};
    if (st.linkUp) toHandles(st, eventDelayMs, [status](SimKelvarinBase& h) { h.AudioStatus(status); });
    SimBaseStation* s = &st;
    later(1000, [this, s, run, elapsed] { audioTick(*s, run, elapsed + 1); });
}

void SimBaseLibrary::show(SimBaseStation& st, SimKeypad& keypad, const std::string& text, int tenths) {
    (void)st;
    if (text.empty()) return;
    keypad.display = text;
    keypad.displayUntilMs = tenths > 0 ? nowMs() + tenths * 100LL : -1;
}

SimOutcome SimBaseLibrary::screen(const std::string& base, int keypad, std::string& shown) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    SimKeypad* kp = st->keypadBySid(keypad);
    if (!kp) return {false, "Keypad " + numText(keypad) + " is not registered on base " + st->port()};
    shown = kp->display;
    const long long until = kp->displayUntilMs;
    if (until >= 0 && nowMs() >= until) {
        // Was the vote open when the timed text ran out?
        const bool open = st->voteOpenedMs_ <= until && (st->voteOpen || st->voteClosedMs_ > until);
        shown = open ? st->vote.VoteQuestionText : std::string();
    }
    return {};
}

std::vector<std::string> SimBaseLibrary::bases() const {
    std::vector<std::string> v;
    for (const auto& s : stations_) v.push_back(s->setup.type + ";" + s->port());
    return v;
}

SimOutcome SimBaseLibrary::keyPress(SimBaseStation& st, int keypad, const std::string& keys, bool isText,
                                   bool withdraw, std::size_t known) {
    auto& all = st.setup.keypads;
    // A crowd knows where its keypads stood; the registry may have changed since.
    SimKeypad* kp = known < all.size() && all[known].sid == keypad ? &all[known] : st.keypadBySid(keypad);
    if (!kp) return {false, "Keypad " + numText(keypad) + " is not registered on base " + st.port()};
    if (!st.linkUp) {
        if (st.voteOpen)
            show(st, *kp, st.vote.SignalLostDuringTransmitText, st.vote.SignalLostDuringTransmitTextTime);
        return {false, "Base " + st.port() + " is disconnected"};
    }
    if (!st.voteOpen) return {false, "No vote open on base " + st.port()};
    // The keypad says it is sending, and once the base has the press, that it got through.
    const bool revote = kp->votedIn == st.voteId;
    const std::string hid = kp->hid;
    SimBaseStation* stp = &st;
    const int voteId = st.voteId;
    // Where the keypad stands now: found again by that place while it still holds the keypad,
    // so a crowd of thousands does not search the registry once per press.
    const std::size_t place = static_cast<std::size_t>(kp - all.data());
    auto sending = [&] {
        show(st, *kp, revote ? st.vote.RevotedText : st.vote.VotedText, 0);
        kp->votedIn = st.voteId;
        later(eventDelayMs, [this, stp, hid, voteId, place] {
            auto& now = stp->setup.keypads;
            SimKeypad* k = place < now.size() && now[place].hid == hid ? &now[place] : stp->keypadByHid(hid);
            if (k && stp->voteOpen && stp->voteId == voteId) show(*stp, *k, stp->vote.VoteText, stp->vote.VoteTextTime);
        });
    };
    const double pressTime = scheduler_.now().secondsSinceMidnight();
    if (st.oldest()) {
        const int port = st.setup.serialPort;
        const int sid = kp->sid;
        sending();
        toPanels(st, eventDelayMs,
                 [port, sid, keys, pressTime](SimVPanel& p) { p.VoteReceived(port, sid, keys, pressTime); });
        return {};
    }
    auto failed = [&](const std::string& why) {
        show(st, *kp, st.vote.VoteFailedText, st.vote.VoteFailedTextTime);
        return SimOutcome{false, why};
    };
    if (!st.setup.session.VoteAccepting) return failed("Voting is paused on base " + st.port());
    std::string data = keys;
    if (withdraw) {
        if (st.vote.KeyMask != 0 && !(st.vote.KeyMask & keyBitOf(kWithdrawKey)))
            return failed("The open vote takes no withdrawals");
        data = "*";
    } else if (!accepts(st.vote, keys, isText)) {
        return failed("Keys " + keys + " not accepted by vote type " + numText(st.vote.VoteType));
    }
    sending();
    KelvarinVote v = st.vote;
    v.HID = kp->hid;
    v.SID = kp->sid;
    v.VoteReplyData = data;
    v.BatteryStrength = kp->battery;
    v.SignalStrength = kp->signal;
    v.PollGroupID = 1;
    v.PollSlotID = kp->sid;
    v.KeyPressTimeStamp = nowMs() - st.voteOpenedMs_;
    v.KeyPressTime = pressTime;
    v.VoteReplyID = st.voteId;
    if (onVoteSent) onVoteSent(st, v);
    toHandles(st, eventDelayMs, [v](SimKelvarinBase& h) { h.VoteReceived(v); });
    return {};
}

SimOutcome SimBaseLibrary::press(const std::string& base, int keypad, const std::string& keys) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    return keyPress(*st, keypad, trim(keys), false, false);
}

SimOutcome SimBaseLibrary::text(const std::string& base, int keypad, const std::string& text) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    return keyPress(*st, keypad, text, true, false);
}

SimOutcome SimBaseLibrary::micRequest(const std::string& base, int keypad, bool withdraw) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    return keyPress(*st, keypad, "0", false, withdraw);
}

// A crowd under way: its keypads in press order, the answer each will give, and how far it
// has come.
struct SimBaseLibrary::CrowdRun {
    SimBaseStation* station = nullptr;
    std::vector<int> sids;
    std::vector<std::size_t> places;  // each keypad's place in the registry when the crowd began
    std::vector<std::string> choices;
    std::vector<std::size_t> picks;   // the choice of each keypad
    double intervalMs = 0;
    double startSeconds = 0;
    std::size_t next = 0;
    int run = 0;
    // Milliseconds after the start at which keypad i presses.
    double dueMs(std::size_t i) const { return static_cast<double>(std::lround(static_cast<double>(i) * intervalMs)); }
};

SimOutcome SimBaseLibrary::crowd(const std::string& base, int keypads, const std::string& answers, int perSecond) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    auto c = std::make_shared<CrowdRun>();
    const std::string a = trim(answers);
    if (contains(a, ",")) {
        for (const auto& ch : split(a, ","))
            if (!trim(ch).empty()) c->choices.push_back(trim(ch));
    } else {
        for (char ch : a)
            if (ch != ' ') c->choices.emplace_back(1, ch);
    }
    if (c->choices.empty()) return {false, "No answers given"};
    const auto& all = st->setup.keypads;
    for (std::size_t i = 0; i < all.size() && static_cast<int>(c->sids.size()) < keypads; ++i)
        if (all[i].kind == DeviceKind::Keypad) {
            c->sids.push_back(all[i].sid);
            c->places.push_back(i);
        }
    // The answers are drawn now, in keypad order, so a seed gives the same crowd whatever the timing.
    for (std::size_t i = 0; i < c->sids.size(); ++i) c->picks.push_back(rng_() % c->choices.size());
    c->station = st;
    c->intervalMs = perSecond > 0 ? 1000.0 / perSecond : 0.0;
    c->startSeconds = scheduler_.monotonicSeconds();
    c->run = crowdRun_;
    const auto count = c->sids.size();
    if (count > 0) later(0, [this, c] { crowdStep(c); });
    return {true, numText(static_cast<long long>(count)) + " keypads"};
}

void SimBaseLibrary::crowdStep(const std::shared_ptr<CrowdRun>& c) {
    if (c->run != crowdRun_) return;
    // Every keypad whose time has come presses now; a late step catches up at once. The
    // clock's seconds are a floating-point number: a microsecond either way is no difference.
    constexpr double kSlackMs = 1e-3;
    const double elapsedMs = (scheduler_.monotonicSeconds() - c->startSeconds) * 1000.0;
    while (c->next < c->sids.size() && c->dueMs(c->next) <= elapsedMs + kSlackMs) {
        const std::size_t i = c->next++;
        keyPress(*c->station, c->sids[i], c->choices[c->picks[i]], false, false, c->places[i]);
    }
    if (c->next >= c->sids.size()) return;
    const double wait = std::ceil(c->dueMs(c->next) - elapsedMs - kSlackMs);
    later(static_cast<int>(std::max(0.0, wait)), [this, c] { crowdStep(c); });
}

SimOutcome SimBaseLibrary::fail(const std::string& base, const std::string& operation, int code, int times) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    if (code == 0 || times == 0)
        st->failures_.erase(operation);
    else
        st->failures_[operation] = {code, times};
    return {};
}

SimOutcome SimBaseLibrary::neverReply(const std::string& base, const std::string& operation, bool on) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    if (on)
        st->silent_.insert(operation);
    else
        st->silent_.erase(operation);
    return {};
}

SimOutcome SimBaseLibrary::error(const std::string& base, int code, const std::string& extra) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    if (st->oldest()) {
        const int port = st->setup.serialPort;
        toPanels(*st, eventDelayMs, [port, code](SimVPanel& p) { p.ErrorMessage(port, code); });
    } else {
        toHandles(*st, eventDelayMs, [code, extra](SimKelvarinBase& h) { h.Error(code, extra); });
    }
    return {};
}

SimOutcome SimBaseLibrary::disconnect(const std::string& base, int reconnectAfterMs) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    if (!st->linkUp) return {false, "Base " + base + " is already disconnected"};
    st->linkUp = false;
    if (st->voteOpen)
        for (auto& k : st->setup.keypads)
            if (k.kind == DeviceKind::Keypad)
                show(*st, k, st->vote.SignalLostDuringVoteText, st->vote.SignalLostDuringVoteTextTime);
    error(base, st->oldest() ? 1 : BaseErrorCode::BaseDisconnectedReconnecting);
    if (reconnectAfterMs >= 0) {
        const std::string port = st->port();
        later(reconnectAfterMs, [this, port] { reconnect(port); });
    }
    return {};
}

SimOutcome SimBaseLibrary::reconnect(const std::string& base) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    if (st->linkUp) return {false, "Base " + base + " is connected"};
    st->linkUp = true;
    if (!st->oldest()) error(base, BaseErrorCode::AutoReconnectSuccess);
    return {};
}

SimOutcome SimBaseLibrary::presenterCommand(const std::string& base, int command, int source, int value) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    std::string hid;
    for (const auto& k : st->setup.keypads)
        if (k.kind == DeviceKind::Presenter) {
            hid = k.hid;
            break;
        }
    if (hid.empty()) return {false, "No presenter keypad on base " + base};
    if (!st->linkUp) return {false, "Base " + base + " is disconnected"};
    toHandles(*st, eventDelayMs, [hid, command, source, value](SimKelvarinBase& h) {
        h.PresenterCommandReceived(hid, command, source, value);
    });
    return {};
}

SimOutcome SimBaseLibrary::scannerCommand(const std::string& base, const std::string& data) {
    SimBaseStation* st = find(base);
    if (!st) return {false, "Unknown base " + base};
    std::string hid;
    for (const auto& k : st->setup.keypads)
        if (k.kind == DeviceKind::Scanner) {
            hid = k.hid;
            break;
        }
    if (hid.empty()) return {false, "No scanner on base " + base};
    toHandles(*st, eventDelayMs, [hid, data](SimKelvarinBase& h) { h.ScannerCommandReceived(hid, data); });
    return {};
}

SimOutcome SimBaseLibrary::reportConfig(const std::string& port, const VPanelBaseConfig& config) {
    SimBaseStation* st = find(port);
    if (!st || !st->oldest()) return {false, "Unknown base " + port};
    toPanels(*st, eventDelayMs, [config](SimVPanel& p) { p.BaseConfigReport(config); });
    return {};
}

SimOutcome SimBaseLibrary::presenterKey(const std::string& port, const std::string& keyName) {
    SimBaseStation* st = find(port);
    if (!st || !st->oldest()) return {false, "Unknown base " + port};
    const int p = st->setup.serialPort;
    toPanels(*st, eventDelayMs, [p, keyName](SimVPanel& panel) { panel.PresenterKey(p, keyName); });
    return {};
}

}  // namespace tlx
