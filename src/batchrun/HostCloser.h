// Closing the host at the end of an unattended run; implemented above this folder.
#pragma once

class CHostCloser {
public:
    virtual ~CHostCloser() = default;

    /// Asks the host to end; it ends after the current host call has returned. Logs what it did.
    /// May throw CHostException when the host raises.
    virtual void CloseHost() = 0;
};
