// The locale-safe number reader and its relatives, over any text and both decimal separators.
// Besides not crashing, the readers never answer NaN: a NaN would pass every range check
// after it (each comparison is false) and reach the number fields.
#include <cmath>

#include "core/NumberFields.h"
#include "core/Text.h"
#include "support/Harness.h"

TLX_FUZZ_HARNESS(in) {
    tlx::setSystemDecimalSeparator(in.flag() ? ',' : '.');
    const std::string text = in.rest();
    const double parsed = tlx::ParseNumber(text);
    const double leading = tlx::leadingNumber(text);
    tlx::fuzz::require(!std::isnan(parsed) && !std::isnan(leading));
    (void)tlx::isNumeric(text);
    // What the readers give is written back as text and stored in the number fields.
    (void)tlx::numText(parsed);
    (void)tlx::formatNumber(parsed, "##0.000");
    (void)tlx::toInt16Field(parsed);
    (void)tlx::toInt32Field(leading);
    tlx::setSystemDecimalSeparator('.');
}
