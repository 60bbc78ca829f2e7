#include "benchmarks/ServerProcess.h"

#include "demo/sample/SampleServer.h"

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

ServerProcess::ServerProcess(const std::function<SampleGroups()>& groups)
{
    int ports[2] = {-1, -1};
    if (pipe(ports) != 0) {
        process = -1;
        return;
    }
    process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const SampleServer server(groups());
        const std::uint16_t listening = server.Port();
        if (write(ports[1], &listening, sizeof listening) != sizeof listening)
            _exit(1);
        for (;;)
            pause();
    }
    close(ports[1]);
    if (read(ports[0], &port, sizeof port) != sizeof port)
        port = 0;
    close(ports[0]);
}

ServerProcess::~ServerProcess()
{
    if (process <= 0)
        return;
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}
