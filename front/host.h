// What the host does alike in every implementation of platform/.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace front {

// The answer to a look-up, as a status of the host: fills the buffer with the value and its
// terminator, or with the empty string where there is no value or it does not fit.
int answerLookUp(const std::string* value, char* buffer, int bufferLength);

// Looks up a member of a JSON object, as text. False when the text is not an object.
bool findMember(const char* json, const char* member, std::optional<std::string>* value);

// The database of preferences, whose values are JSON texts. False when it cannot be written.
bool createPreferences(const std::string& path,
                       const std::map<std::string, std::string>& preferences);
bool storePreference(const std::string& path, const std::string& key, const std::string& value);

// Empty too where the database cannot be read.
std::map<std::string, std::string> storedPreferences(const std::string& path);

}  // namespace front
