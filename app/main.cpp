#include "app/Environment.h"
#include "app/StartCheck.h"
#include "app/TidewickApp.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    if (const auto missing = tidewick::missingResource()) {
        std::fprintf(stderr, "tidewick: the system gives %s\n", missing->c_str());
        return EXIT_FAILURE;
    }
    tidewick::prepareEnvironment();
    return tidewick::TidewickApp(argc, argv).run();
}
