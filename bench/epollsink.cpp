// The least that a receiver can do: one thread that waits in epoll and reads
// what any of its connections has, to be compared with the network page. The
// port goes to standard output first: "port 4711". Ends when bytes have come, and
// then none for a second.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace {

double processorSeconds()
{
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::exit(1);
}

int listenOnLoopback()
{
    const int server = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *plain = reinterpret_cast<sockaddr *>(&address);
    if (bind(server, plain, length) != 0 || listen(server, 1024) != 0 ||
        getsockname(server, plain, &length) != 0)
        fail("epollsink");
    std::printf("port %d\n", ntohs(address.sin_port));
    std::fflush(stdout);
    return server;
}

void watch(int epoll, int socket)
{
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    wanted.data.fd = socket;
    if (epoll_ctl(epoll, EPOLL_CTL_ADD, socket, &wanted) != 0)
        fail("epollsink");
}

} // namespace

int main()
{
    using Clock = std::chrono::steady_clock;
    const int server = listenOnLoopback();
    const int epoll = epoll_create1(0);
    watch(epoll, server);

    std::vector<char> buffer(1 << 18);
    std::array<epoll_event, 64> ready{};
    Clock::time_point begin;
    Clock::time_point end;
    long long bytes = 0;
    for (;;) {
        const int count =
            epoll_wait(epoll, ready.data(), static_cast<int>(ready.size()), bytes > 0 ? 1000 : -1);
        if (count == 0)
            break;
        for (int i = 0; i < count; ++i) {
            const int socket = ready[static_cast<size_t>(i)].data.fd;
            if (socket == server) {
                watch(epoll, accept(server, nullptr, nullptr));
                continue;
            }
            const ssize_t got = read(socket, buffer.data(), buffer.size());
            if (got <= 0) {
                close(socket);
                continue;
            }
            end = Clock::now();
            if (bytes == 0)
                begin = end;
            bytes += got;
        }
    }

    const double seconds = std::chrono::duration<double>(end - begin).count();
    std::printf("received %lld, %.1f s, %.1f MB/s, cpu %.1f s\n", bytes, seconds,
                static_cast<double>(bytes) / 1e6 / seconds, processorSeconds());
    return 0;
}
