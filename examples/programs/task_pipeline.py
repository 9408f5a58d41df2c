# Producers, workers and a deadline on one event loop.
import asyncio


async def produce(queue, name, count):
    for number in range(count):
        await queue.put((name, number))
        await asyncio.sleep(0)


async def work(queue, results):
    while True:
        name, number = await queue.get()
        try:
            results.append(f"{name}{number}")
        finally:
            queue.task_done()


async def never():
    await asyncio.Event().wait()


async def main():
    queue, results = asyncio.Queue(maxsize=2), []
    workers = [asyncio.create_task(work(queue, results)) for _ in range(3)]
    await asyncio.gather(produce(queue, "a", 4), produce(queue, "b", 4))
    await queue.join()
    for worker in workers:
        worker.cancel()
    outcomes = await asyncio.gather(*workers, return_exceptions=True)
    assert all(isinstance(outcome, asyncio.CancelledError) for outcome in outcomes)

    try:
        await asyncio.wait_for(never(), timeout=0.01)
    except asyncio.TimeoutError:
        print("the deadline passed")

    loop = asyncio.get_running_loop()
    order = []
    loop.call_later(0.02, order.append, "second")
    loop.call_later(0.01, order.append, "first")
    assert await loop.run_in_executor(None, sum, range(10)) == 45
    await asyncio.sleep(0.05)
    print(*order)

    process = await asyncio.create_subprocess_exec("echo", "from a process", stdout=asyncio.subprocess.PIPE)
    output, _ = await process.communicate()
    print(output.decode().strip(), process.returncode)
    return results


results = asyncio.run(main())
print(sorted(results))
assert sorted(results) == [f"{name}{number}" for name in "ab" for number in range(4)]
