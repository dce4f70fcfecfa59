#include "app/Environment.h"
#include "app/TidewickApp.h"

int main(int argc, char *argv[])
{
    tidewick::prepareEnvironment();
    return tidewick::TidewickApp(argc, argv).run();
}
