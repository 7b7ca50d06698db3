"""Ends a run with a table: machine, what was done there, seconds."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
name: table
type: aggregate
short_description: A table of what was done on each machine
description:
  - Ends a run with some lines for each machine - its name, how many seconds its tasks took, what those with
    M(kwinstutil.deploy.kwbatch_tree) have changed, which others have changed something, and what failed.
author:
  - the libKWINSTUTIL developers (@kwinstutil)
requirements:
  - C(callbacks_enabled = kwinstutil.deploy.table) in C(ansible.cfg)
"""

import time

from ansible.plugins.callback import CallbackBase


def what_changed(result):
    """What a task has changed: "+ product BASE, product Modeler - language French"."""
    before, after = (
        {line.split(": ", 1)[1] for line in result["diff"][side].splitlines()} for side in ("before", "after")
    )
    groups = [("+ ", after - before), ("- ", before - after)]
    text = " ".join(sign + ", ".join(sorted(lines)) for sign, lines in groups if lines)
    return text or " ".join(result["done"])


class CallbackModule(CallbackBase):
    CALLBACK_VERSION = 2.0
    CALLBACK_TYPE = "aggregate"
    CALLBACK_NAME = "kwinstutil.deploy.table"
    CALLBACK_NEEDS_ENABLED = True

    def __init__(self):
        super(CallbackModule, self).__init__()
        self.started = {}  # (machine, task): when
        self.seconds = {}  # machine: how long its tasks took
        self.done = {}  # machine: what was done

    def v2_runner_on_start(self, host, task):
        self.started[host.name, task._uuid] = time.time()

    def finish(self, result, *texts):
        name = result._host.name
        started = self.started.pop((name, result._task._uuid), time.time())
        self.seconds[name] = self.seconds.get(name, 0) + time.time() - started
        self.done.setdefault(name, []).extend(text for text in texts if text)

    def v2_runner_on_ok(self, result):
        is_tree = result._task.resolved_action == "kwinstutil.deploy.kwbatch_tree"
        if is_tree:
            text = what_changed(result._result)
        else:
            text = result._task.name if result.is_changed() else ""
        self.finish(result, text)

    def v2_runner_on_skipped(self, result):
        self.finish(result)

    def v2_runner_on_failed(self, result, ignore_errors=False):
        done = result._result.get("done", [])
        self.finish(result, " ".join(done), f"FAILED: {result._result.get('msg')}")

    def v2_runner_on_unreachable(self, result):
        self.finish(result, "UNREACHABLE")

    def v2_playbook_on_stats(self, stats):
        width = max([len(name) for name in self.done] + [len("machine")])
        self._display.display(f"\n{'machine':{width}}  seconds  what was done")
        for name in sorted(self.done):
            first = f"{name:{width}}  {self.seconds[name]:7.1f}  "
            texts = self.done[name] or ["nothing to do"]
            for text in texts:
                self._display.display(first + " ".join(text.split()))
                first = " " * len(first)
