// Runs a command and prints the most memory that it had, in KiB; the exit status is the command's.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

int main(int, char** argv) {
  const pid_t child = fork();
  if (child < 0) return 127;
  if (child == 0) {
    execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  rusage usage = {};
  if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)) return 126;
  std::printf("%ld\n", usage.ru_maxrss);
  return WEXITSTATUS(status);
}
