#include "tools/newgame/GameKeys.h"

#include <string>

namespace {

// Every key the state table and the states already use.
bool Taken(char key) {
    if (key == kNextModelKey || key == kPreviousModelKey || key == kReturnKey ||
        key == kReloadKey || key == kPauseKey)
        return true;
    for (const MovementKey& movement : kMovementKeys) {
        if (movement.m_Key == key)
            return true;
    }
    return false;
}

std::string TakeKeys() {
    std::string keys = "123456789";
    for (char c = 'a'; c <= 'z'; ++c) {
        if (!Taken(c))
            keys += c;
    }
    for (char c = 'A'; c <= 'Z'; ++c)
        keys += c;
    return keys;
}

}  // namespace

char TakeKey(std::size_t take) {
    static const std::string keys = TakeKeys();
    return take < keys.size() ? keys[take] : '\0';
}
