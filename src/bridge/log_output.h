#pragma once
// Whether the library's log lines are printed. On by default; the Java system
// property "vostan.log" set to "off" when the library loads switches it off.

namespace vostan {
void setLogEnabled(bool on);
bool logEnabled();
}  // namespace vostan
