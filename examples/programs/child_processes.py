# Starts other programs: pipes, input, exit statuses, environment, a deadline.
import os
import signal
import subprocess
import sys

print(subprocess.run(["echo", "hello"], capture_output=True, text=True, check=True).stdout, end="")

sort = subprocess.Popen(["sort", "-n"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
output, _ = sort.communicate("10\n9\n100\n")
print(output.split(), sort.returncode)

try:
    subprocess.run(["sh", "-c", "echo gone wrong >&2; exit 3"], check=True, stderr=subprocess.PIPE, text=True)
except subprocess.CalledProcessError as error:
    print("status", error.returncode, "because", error.stderr.strip())

code = "import os, sys; print(os.environ['GREETING'], sys.argv[1:]); sys.exit(5)"
child = subprocess.run([sys.executable, "-c", code, "a b", "c"], env={**os.environ, "GREETING": "hi"},
                       stdout=subprocess.PIPE, text=True)
print(child.stdout.strip(), child.returncode)
assert child.returncode == 5

try:
    subprocess.run(["sleep", "60"], timeout=0.05)
except subprocess.TimeoutExpired as error:
    print("gave up on", error.cmd)

sleeping = subprocess.Popen(["sleep", "60"])
sleeping.send_signal(signal.SIGTERM)
assert sleeping.wait() == -signal.SIGTERM

sys.stdout.flush()
child = os.fork()
if child == 0:
    print("in the forked child")
    sys.stdout.flush()
    os._exit(4)
_, status = os.waitpid(child, 0)
print("the child ended with", os.WEXITSTATUS(status))
