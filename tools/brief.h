// The brief form of a value, as zoldump --brief and the Python module show
// it.
#pragma once

#include <string>

class AsnType;

namespace ZolDump {

// The brief form: one line per member present, its name and, for a leaf,
// its value; the members of a constructed member follow on lines indented
// two more. Enumerations show their names, octet strings as "text" when
// every octet is printable, else as 'hex'H.
void Brief(AsnType& value, std::string& out);

}  // namespace ZolDump
