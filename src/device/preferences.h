// The user's settings and the system's properties.
#pragma once

namespace tav {

// Copies a member of a preference whose value is a JSON object. Failures are reported, except those
// of the host's look-up of the member, which have no message (other than that the value does not
// fit).
int getPrefsDBField(const char* key, const char* member, char* buffer, int bufferLength);

// Copies a system property. Leaves it to the caller to report a failure.
int getKoraPrefSystemValue(const char* key, char* buffer, int bufferLength);

}  // namespace tav
