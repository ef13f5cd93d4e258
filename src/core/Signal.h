#pragma once
// A minimal event: handlers are called in the order they connected. A handler may
// disconnect itself or others while the signal is being raised.
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tlx {

template <class... Args>
class Signal {
public:
    using Handler = std::function<void(Args...)>;

    std::uint64_t connect(Handler h) {
        const std::uint64_t id = ++next_;
        slots_->push_back({id, std::make_shared<Handler>(std::move(h))});
        return id;
    }
    void disconnect(std::uint64_t id) {
        auto& v = *slots_;
        for (auto it = v.begin(); it != v.end(); ++it)
            if (it->id == id) {
                v.erase(it);
                return;
            }
    }
    void operator()(Args... args) const {
        // Work on a copy so that handlers can connect and disconnect while we raise.
        const auto snapshot = *slots_;
        for (const auto& s : snapshot) {
            if (!stillConnected(s.id)) continue;
            (*s.handler)(args...);
        }
    }
    std::size_t size() const { return slots_->size(); }

private:
    struct Slot {
        std::uint64_t id;
        std::shared_ptr<Handler> handler;
    };
    bool stillConnected(std::uint64_t id) const {
        for (const auto& s : *slots_)
            if (s.id == id) return true;
        return false;
    }
    std::shared_ptr<std::vector<Slot>> slots_ = std::make_shared<std::vector<Slot>>();
    std::uint64_t next_ = 0;
};

}  // namespace tlx
