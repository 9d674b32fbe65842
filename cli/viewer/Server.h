// Serves a site to browsers of this machine, on 127.0.0.1 and below a path that nobody can guess.
//
// Whoever does not know the path, as another user of the machine or a page from elsewhere, gets nothing: not even whether anything is
// there. One that sends no request keeps nobody else from being served.
#pragma once

#include "cli/viewer/Browser.h"
#include "cli/viewer/Site.h"

#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct MHD_Connection;
struct MHD_Daemon;

namespace vxhost
{

class Server
{
  public:
    // Throws UsageError when the port cannot be had. 0 is any that is free.
    Server(const Site &site, uint16_t port);
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    ~Server();

    const std::string &Address() const { return address_; }

    // Serves until the last page is closed. The first may take as long as it likes; where a browser was asked for it, which is not null
    // then, some minutes. Returns false when none came.
    bool Serve(Browser *browser, Messages *messages);

  private:
    using Clock = std::chrono::steady_clock;
    // A connection that a page holds open for as long as it is shown.
    struct Alive {
        Server *server;
        MHD_Connection *connection;
        int socket;
        bool mustTell = true; // that we are alive, too
        bool hasLeft = false;
    };
    struct Library; // what it calls
    friend Library;

    // Both are about a connection: it has asked for nothing yet; it has, or it is closed.
    void AddSilent(int socket);
    void TakeSilent(int socket);
    int Answer(MHD_Connection *connection, std::string_view path, std::string_view method);
    int AnswerAlive(MHD_Connection *connection);
    void End(Alive *alive);
    void CloseSilent();
    void TellAlive();
    // Waits until there is something to do, or it is time to. Returns whether the browser's program has ended.
    bool Wait(Clock::time_point next, Browser *browser);

    const Site &site_;
    Descriptor listening_;
    std::string host_;   // as a browser names us
    std::string secret_; // "/RANDOM/"
    std::string address_;
    MHD_Daemon *daemon_ = nullptr;
    std::map<int, Clock::time_point> silent_; // connections without a whole request, and since when
    std::list<Alive> alive_;
    Clock::time_point seen_; // when a page was here
    bool hasPage_ = false;   // or had one
    Clock::time_point told_;
};

} // namespace vxhost
