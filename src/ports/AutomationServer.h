#pragma once
// Carries the public automation class `tallix` to other processes: they create objects of
// it, call its methods and receive its events. One server per controller.
#include <cstddef>
#include <string>

namespace tlx {

class AutomationServer {
public:
    virtual ~AutomationServer() = default;

    // Who already serves the class (so that a second controller does not start), or empty
    // when nobody does.
    virtual std::string servedElsewhere() = 0;
    // Publishes the class. Empty on success, otherwise why it could not be published.
    virtual std::string start() = 0;
    virtual void stop() = 0;
    virtual bool serving() const = 0;
    // Clients that hold an object of the class now.
    virtual std::size_t clientCount() const = 0;
};

}  // namespace tlx
