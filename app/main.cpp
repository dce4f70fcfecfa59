#include "app/TidewickApp.h"

int main(int argc, char *argv[])
{
    return tidewick::TidewickApp(argc, argv).run();
}
