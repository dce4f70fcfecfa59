/* A user database (nss(5), "hanging") that knows one user, 54397, and never answers about others.
 */
#include <nss.h>
#include <pwd.h>
#include <unistd.h>

enum nss_status _nss_hanging_getpwuid_r(uid_t user, struct passwd *result, char *buffer,
                                        size_t size, int *error);

enum nss_status _nss_hanging_getpwuid_r(uid_t user, struct passwd *result, char *buffer,
                                        size_t size, int *error)
{
    static char name[] = "somebody";
    static char nothing[] = "";
    (void)buffer, (void)size, (void)error;
    while (user != 54397)
        pause();
    *result = (struct passwd){name, nothing, user, user, nothing, nothing, nothing};
    return NSS_STATUS_SUCCESS;
}
