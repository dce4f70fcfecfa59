/* A user database (nss(5), "hanging") that never answers. */
#include <nss.h>
#include <pwd.h>
#include <unistd.h>

enum nss_status _nss_hanging_getpwuid_r(uid_t user, struct passwd *result, char *buffer,
                                        size_t size, int *error);

enum nss_status _nss_hanging_getpwuid_r(uid_t user, struct passwd *result, char *buffer,
                                        size_t size, int *error)
{
    (void)user, (void)result, (void)buffer, (void)size, (void)error;
    for (;;)
        pause();
}
