// zoldump --encode: JSON values in, their BER out.
#pragma once

#include "options.h"

namespace ZolDump {

// Reads JSON values from the inputs, each {"type": NAME, "value": ...} as
// --json prints them or, with --type, a bare value, and writes their BER
// back to back (with --hex, one line of hex text each). Nothing is written
// unless every value encodes. Returns the exit status; throws InputError.
int Encode(const Options& o);

}  // namespace ZolDump
