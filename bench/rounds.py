"""How every row is measured: processor time, the sides in turns, round by round."""
import resource
import statistics
import subprocess


def milliseconds(command):
    """Of processor on one core: the machine may have other work."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(["taskset", "-c", "0", *map(str, command)], check=True, capture_output=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return 1000 * (after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime)


def measured(sides, rounds, prepare=lambda label: None):
    """The times of each side's command in every round. Rounds that come one after another share what else goes on."""
    times = {label: [] for label in sides}
    for _ in range(rounds):
        for label, command in sides.items():
            prepare(label)
            times[label].append(milliseconds(command))
    return times


def row(title, times):
    """A line of Markdown: the first side's median, and the median of what the others took beside it in the same round."""
    (_, ours), *others = times.items()
    ratios = (f"{label} {statistics.median(map(lambda a, b: a / b, theirs, ours)):.3g}" for label, theirs in others)
    middle = statistics.median(ours)
    return f"| {title} | {middle:.{0 if middle >= 100 else 3}{'f' if middle >= 100 else 'g'}} | {', '.join(ratios)} |"


HEAD = "| what | ours, ms | others, as multiples of ours |\n|---|---|---|"
