/* A SANE backend that never comes back from listing its devices. */
#include <unistd.h>

#include <sane/sane.h>

__attribute__((visibility("default"))) SANE_Status sane_hanging_init(SANE_Int* version,
                                                                     SANE_Auth_Callback authorize);
__attribute__((visibility("default"))) SANE_Status
sane_hanging_get_devices(const SANE_Device*** list, SANE_Bool local);
__attribute__((visibility("default"))) void sane_hanging_exit(void);

SANE_Status sane_hanging_init(SANE_Int* version, SANE_Auth_Callback authorize) {
    (void)authorize;
    if (version != NULL)
        *version = SANE_VERSION_CODE(SANE_CURRENT_MAJOR, 0, 1);
    return SANE_STATUS_GOOD;
}

SANE_Status sane_hanging_get_devices(const SANE_Device*** list, SANE_Bool local) {
    (void)list;
    (void)local;
    for (;;)
        pause();
}

void sane_hanging_exit(void) {}
