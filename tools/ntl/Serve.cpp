#include "author/server/serve.h"

#include "tools/ntl/Commands.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

#include <unistd.h>

namespace ntl {

// As `ntl lint` judges. Whatever else is printed must not come between the messages.
int runServe(const Settings& settings) {
    for (const char* const parameter : {"ntl.enableDiagnostics", "arch.enableTestFeatures", "ntl.enableMapLib"})
        enableByDefault(settings, parameter);
    endTimeLimit(); // sessions last
    const int output = ::dup(STDOUT_FILENO);
    if (output < 0) throw Failure(Unusable, "there is no standard output");
    const OutputToError redirect;
    const int status = hdnt::author::serve(STDIN_FILENO, output);
    ::close(output);
    return status;
}

} // namespace ntl
