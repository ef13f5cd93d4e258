#pragma once
// A run-time error as the controller traps it: a number and a description.
// Adapters throw it for automation failures; procedures trap it through the error object.
#include <stdexcept>
#include <string>

namespace tlx {

class AppError : public std::runtime_error {
public:
    AppError(int number, const std::string& description)
        : std::runtime_error(description), number_(number) {}
    int number() const { return number_; }

private:
    int number_;
};

// Error numbers used across the program.
namespace err {
inline constexpr int kInvalidProcedureCall = 5;
inline constexpr int kOutOfMemory = 7;
inline constexpr int kSubscriptOutOfRange = 9;
inline constexpr int kFileNotFound = 53;
inline constexpr int kPermissionDenied = 70;
inline constexpr int kPathNotFound = 76;
inline constexpr int kObjectRequired = 424;
inline constexpr int kCannotCreateObject = 429;
// The presentation program failed inside an automation call.
inline constexpr int kAutomationServerFault = -2147417851;  // 0x80010105
// E_UNEXPECTED, shown only when its description lacks the "~" marker.
inline constexpr int kUnexpected = static_cast<int>(0x8000FFFF);
}  // namespace err

}  // namespace tlx
