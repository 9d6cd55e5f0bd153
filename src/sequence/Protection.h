// What is to be said about the protection that a step gives, whichever step it is.
#pragma once

#include <string>

class CSequenceFindings;

/// Passwords as they are used.
struct Protection {
    std::string openPassword, permissionsPassword;
    bool mayGetOpenPassword = false;  // from somewhere else
    bool restricts = false;           // not all rights are given
    bool isRc4 = false, isShortKey = false;
};

/// Weak encryption; passwords that are missing, alike, or useless.
void CheckProtection(const Protection& protection, CSequenceFindings& findings);

/// Whether the encryption can express a password: AES with 256 bits, or an older method. It is told of by `which`,
/// never by its text.
void CheckPasswordIsTaken(const char* which, const std::string& password, bool aes256, CSequenceFindings& findings);
