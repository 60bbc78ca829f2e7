#include "benchmarks/ServerProcess.h"

#include "demo/sample/SampleServer.h"

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

ServerProcess::ServerProcess(const std::function<SampleGroups()>& groups)
{
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) {
        process = -1;
        return;
    }
    process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        SampleServer::Options options;
        options.identity = std::make_shared<Identity>();
        const SampleServer server(groups(), options);
        const std::uint16_t listening[2] = {server.Port(), server.SecurePort()};
        if (write(ends[1], listening, sizeof listening) != sizeof listening)
            _exit(1);
        for (;;)
            pause();
    }
    close(ends[1]);
    if (read(ends[0], ports, sizeof ports) != sizeof ports)
        ports[0] = ports[1] = 0;
    close(ends[0]);
}

ServerProcess::~ServerProcess()
{
    if (process <= 0)
        return;
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}
