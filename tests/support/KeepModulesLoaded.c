/* Preloaded into the tests under the sanitizers: plug-ins stay loaded until the process ends,
 * so that the leak report at exit can name the library each leaked block came from (libgphoto2
 * and Qt unload their drivers before that, and an unloaded library's blocks show unnamed). */
int dlclose(void* handle)
{
    (void)handle;
    return 0;
}
