#pragma once
// The one error type of the .pptx reader and writer. Every fault of a file (not a zip, not a
// presentation, a missing or broken part) and every misuse of the deck model arrives as a
// PptxError with a message that names the file and the part.
#include <stdexcept>
#include <string>

namespace tlx::pptx {

enum class Fault {
    Io,               // the file cannot be read or written
    NotZip,           // the bytes are not a readable zip archive
    NotPresentation,  // a zip, but not a presentation package
    MissingPart,      // a relationship or list names a part that is not in the package
    BrokenPart,       // a part is not well-formed or lacks what it must hold
    Usage,            // the caller asked for something that does not exist
};

class PptxError : public std::runtime_error {
public:
    PptxError(Fault fault, const std::string& message) : std::runtime_error(message), fault_(fault) {}
    Fault fault() const { return fault_; }

private:
    Fault fault_;
};

}  // namespace tlx::pptx
