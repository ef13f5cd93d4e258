#pragma once
// Participant names: the list that ties keypad numbers to people and vote weightings. It
// travels with the presentation, in its tag "Participant Names" or as a file beside it.
#include <string>

namespace tlx {

class Controller;
struct GlobalState;

inline constexpr const char* kParticipantNamesTag = "Participant Names";
inline constexpr const char* kParticipantListXlsx = "tallix Participant list.xlsx";
inline constexpr const char* kParticipantListXls = "tallix Participant list.xls";
inline constexpr const char* kNamesTxt = "names.txt";

// Fills `glo.participants` from the active presentation's tag or the first list file beside
// it; `status` says where the list came from (or why there is none).
void LoadParticipantNames(Controller& controller, std::string& status);

// Writes the table to "tallix Participant list.xlsx" beside the active presentation; false
// when there is nowhere to write or the workbook could not be written.
bool ExportParticipantNames(Controller& controller);

// The GETNAMES reply: "StartListOfNames", one "keypad, name, weighting" line per
// participant, "EndListOfNames".
std::string participantNamesReply(const GlobalState& glo);

}  // namespace tlx
