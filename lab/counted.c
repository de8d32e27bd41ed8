/*
 * For a build that counts what runs: the processes of the switches are killed once nobody needs
 * them, and leave by _exit, and neither would write what they counted.
 */
#include <signal.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

int __real_kill(pid_t pid, int number);
int __wrap_kill(pid_t pid, int number);
_Noreturn void __wrap__exit(int status);

/* A process whose line is closed ends by itself, soon; one that is stopped does not. */
int __wrap_kill(pid_t pid, int number) {
  siginfo_t ended = {0};
  for (int tries = 0; number == SIGKILL && ended.si_pid == 0 && tries < 500; ++tries) {
    if (tries > 0) usleep(1000);
    if (waitid(P_PID, (id_t)pid, &ended, WEXITED | WNOHANG | WNOWAIT) != 0) break;
  }
  return __real_kill(pid, number);
}

/* What was to be said belongs to the process that is left. */
_Noreturn void __wrap__exit(int status) {
  __fpurge(stdout);
  exit(status);
}
