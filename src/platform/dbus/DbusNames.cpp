#include "platform/dbus/DbusNames.h"

#include "core/Text.h"

namespace tlx::bus {

const std::vector<Method>& tallixMethods() {
    static const std::vector<Method> m = {
        {"VoteLoaded", "", "", {}},
        {"SlideShowBegin", "i", "", {"window"}},
        {"SlideShowEnd", "", "", {}},
        {"SlideShowNextSlide", "", "", {}},
        {"CurrentSlide", "", "i", {}},
        {"PowerPointClosed", "", "", {}},
        {"init", "s", "", {"NewArgs"}},
        {"SendCommand", "s", "b", {"sCommand"}},
    };
    return m;
}

const std::vector<Method>& tallixSignals() {
    static const std::vector<Method> m = {
        {"FromTLXCtrl", "s", "", {"sData"}},
        {"Initialised", "", "", {}},
        {"FromCtrlFormBaseStationStartVoteCount", "i", "", {"baseCount"}},
        {"FromTLXCtrlBaseError", "is", "", {"BaseIndex", "errorMsg"}},
        {"FromTLXCtrlBaseFeedback", "is", "", {"BaseIndex", "feedbackMsg"}},
        {"VKeyPressed", "", "", {}},
    };
    return m;
}

const std::vector<Method>& simShowMethods() {
    static const std::vector<Method> m = {
        {"Open", "s", "", {"path"}},
        {"Begin", "", "", {}},
        {"Next", "", "", {}},
        {"Previous", "", "", {}},
        {"GoTo", "i", "", {"slide"}},
        {"End", "", "", {}},
        {"Close", "", "", {}},
        {"KeyDown", "i", "", {"vk"}},
        {"KeyUp", "i", "", {"vk"}},
        {"CurrentSlide", "", "i", {}},
        {"PresentationTag", "s", "s", {"name"}},
        {"SlideTag", "is", "s", {"slide", "name"}},
        {"SlideText", "is", "s", {"slide", "shape"}},
    };
    return m;
}

const std::vector<Method>& simBasesMethods() {
    static const std::vector<Method> m = {
        {"Press", "sis", "", {"base", "keypad", "keys"}},
        {"Crowd", "sisi", "", {"base", "keypads", "answers", "perSecond"}},
        {"MicRequest", "sib", "", {"base", "keypad", "withdraw"}},
        {"Text", "sis", "", {"base", "keypad", "text"}},
        {"Fail", "ssi", "", {"base", "operation", "code"}},
        {"Disconnect", "s", "", {"base"}},
        {"Reconnect", "s", "", {"base"}},
        {"Bases", "", "as", {}},
        {"Screen", "si", "s", {"base", "keypad"}},
    };
    return m;
}

const Method* findMethod(const std::vector<Method>& methods, std::string_view name) {
    for (const auto& m : methods)
        if (iequals(m.name, name)) return &m;
    return nullptr;
}

}  // namespace tlx::bus
