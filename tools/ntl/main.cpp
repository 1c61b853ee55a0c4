#include "tools/ntl/Options.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

#include <csignal>
#include <exception>
#include <new>

int main(int argc, char** argv) {
    ntl::openStandardStreams();
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN); // a failed write like any other
    try {
        return ntl::runCommandLine(argc, argv);
    } catch (const ntl::Failure& failure) {
        ntl::complain(failure.what());
        return failure.status();
    } catch (const std::bad_alloc&) {
        ntl::complain("out of memory");
    } catch (const std::exception& error) {
        ntl::complain(error.what());
    }
    return ntl::Faulty;
}
