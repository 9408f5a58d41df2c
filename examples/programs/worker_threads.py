# Workers share a queue; one of them is still at work when the main program has come to its end.
import atexit
import queue
import threading
import time

jobs, done, lock = queue.Queue(), {}, threading.Lock()
own = threading.local()


def work():
    own.count = 0
    while (number := jobs.get()) is not None:
        with lock:
            done[number] = number * number
        own.count += 1
        jobs.task_done()
    jobs.task_done()


workers = [threading.Thread(target=work, name=f"worker-{i}") for i in range(4)]
for worker in workers:
    worker.start()
for number in range(100):
    jobs.put(number)
jobs.join()
for _ in workers:
    jobs.put(None)
for worker in workers:
    worker.join()
assert not hasattr(own, "count") and done == {n: n * n for n in range(100)}
print(len(done), "jobs done, the last is", done[99])

failures = []
threading.excepthook = lambda failure: failures.append(failure.exc_value)
failing = threading.Thread(target=lambda: 1 / 0)
failing.start()
failing.join()
print("a thread failed:", failures[0])

barrier = threading.Barrier(3)
meeting = [threading.Thread(target=barrier.wait) for _ in range(2)]
for thread in meeting:
    thread.start()
assert barrier.wait(timeout=60) in range(3)
for thread in meeting:
    thread.join()

ended = threading.Event()


def outlive():
    ended.wait()
    time.sleep(0.05)
    print("the last thread ends")


threading.Thread(target=outlive).start()
atexit.register(print, "exit handlers run last")
print("the main program ends")
ended.set()
