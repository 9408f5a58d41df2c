# Logs to a stream of its own, with a filter, exception texts and a configuration given as data.
import io
import logging
import logging.config
import logging.handlers
import sys
import warnings

logging.config.dictConfig({
    "version": 1,
    "disable_existing_loggers": False,
    "formatters": {"short": {"format": "%(levelname)-8s %(name)s: %(message)s"}},
    "handlers": {"out": {"class": "logging.StreamHandler", "formatter": "short", "stream": "ext://sys.stdout"}},
    "loggers": {"audit": {"level": "DEBUG", "handlers": ["out"], "propagate": False}},
})
audit = logging.getLogger("audit")
door = logging.getLogger("audit.door")


class Discreet(logging.Filter):
    def filter(self, record):
        record.msg = str(record.msg).replace("4711", "****")
        return True


door.addFilter(Discreet())
audit.debug("opened %d doors", 2)
door.info("code 4711 accepted")
door.warning("locked", extra={"where": "north"})

memory = io.StringIO()
handler = logging.StreamHandler(memory)
audit.addHandler(handler)
try:
    {}["key"]
except KeyError:
    audit.exception("lookup failed")
audit.removeHandler(handler)
lines = memory.getvalue().splitlines()
assert lines[0] == "lookup failed" and lines[-1] == "KeyError: 'key'", lines

buffered = logging.handlers.MemoryHandler(10, target=logging.StreamHandler(sys.stdout))
quiet = logging.getLogger("quiet")
quiet.propagate = False
quiet.addHandler(buffered)
quiet.warning("kept for later")
print("before the flush")
buffered.flush()

with warnings.catch_warnings(record=True) as caught:
    warnings.simplefilter("always")
    warnings.warn("old", DeprecationWarning)
print([str(warning.message) for warning in caught])
