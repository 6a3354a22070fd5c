"""What running processes take, as /proc tells it."""
import contextlib
import pathlib
import threading


def status(pid):
    """The kilobytes of /proc/PID/status by name; empty when the process has ended."""
    try:
        lines = pathlib.Path(f"/proc/{pid}/status").read_text().splitlines()
    except (FileNotFoundError, ProcessLookupError):
        return {}
    fields = (line.split() for line in lines if line.endswith(" kB"))
    return {words[0].rstrip(":"): int(words[1]) for words in fields}


def family(pid):
    """The process and all below it."""
    found = [pid]
    for each in found:
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):
            for task in pathlib.Path(f"/proc/{each}/task").iterdir():
                found += map(int, (task / "children").read_text().split())
    return found


class MemoryWatch(threading.Thread):
    """Looks at a process and its helpers again and again. Peaks in megabytes: `own` and `helpers` of the anonymous
    memory, `shared` of what they share."""

    def __init__(self, pid, seconds=0.01):
        super().__init__(daemon=True)
        self.pid, self.seconds, self.end = pid, seconds, threading.Event()
        self.own = self.helpers = self.shared = self.together = 0.0

    def run(self):
        while not self.end.wait(self.seconds):
            pids = family(self.pid)
            all_fields = [status(pid) for pid in pids]
            anonymous = [fields.get("RssAnon", 0) / 1024 for fields in all_fields]
            self.own = max(self.own, anonymous[0])
            self.helpers = max(self.helpers, sum(anonymous[1:]))
            self.together = max(self.together, sum(anonymous))
            self.shared = max(self.shared, *(fields.get("RssShmem", 0) / 1024 for fields in all_fields))

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *reason):
        self.end.set()
        self.join()
