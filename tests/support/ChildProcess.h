#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <string>

// Runs action in a forked child and returns the text it returned, sent back through a pipe:
// for what must not touch the test process itself (a lower limit, another user). status is
// the child's wait status; a child that could not send its text exits with 1.
template <typename Action>
std::string textOfChild(Action action, int& status) {
    int channel[2];
    if (::pipe(channel) != 0) {
        status = -1;
        return "";
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(channel[0]);
        const std::string text = action();
        const bool sent =
            ::write(channel[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
        ::_exit(sent ? 0 : 1);
    }
    ::close(channel[1]);
    std::string text;
    char chunk[4096];
    ssize_t got;
    while ((got = ::read(channel[0], chunk, sizeof chunk)) > 0) {
        text.append(chunk, static_cast<size_t>(got));
    }
    ::close(channel[0]);
    status = 0;
    ::waitpid(child, &status, 0);
    return text;
}
