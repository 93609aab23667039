#pragma once

#include <QString>

// What the operator reads for a diagnostic code of a drive, as the status datagram carries it: 0xF2026 is the
// drive's F2026. Exact: a code that is not in the table reads as a link fault, and so does 0, the value
// before the first datagram.
QString stateDesc(int code);

// The same for the one state that the virtual axes X, Z and PHI share.
QString virtualStateDesc(int state);
