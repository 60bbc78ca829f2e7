#pragma once

#include "demo/sample/SampleGroups.h"

#include <functional>
#include <sys/types.h>

// The sample server in a process of its own, so that neither its processor time nor its memory counts as the client's.
class ServerProcess {
public:
    // `groups` is called in the new process.
    explicit ServerProcess(const std::function<SampleGroups()>& groups);
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    // 0 if the server did not come up.
    std::uint16_t Port() const { return ports[0]; }
    // For encrypted connections; the certificate is one that nobody vouches for.
    std::uint16_t SecurePort() const { return ports[1]; }

private:
    pid_t process;
    std::uint16_t ports[2] = {};
};
