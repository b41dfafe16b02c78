#!/usr/bin/env python3
"""The first start, which explains itself."""
import json
import unittest

from case import SETTLED, DesktopTest, fresh, stays, wait_until

TITLE = "Welcome to Vellumor"


class Onboarding(DesktopTest):
    accounts = (fresh("ana", "Ana", 47), fresh("work", "Work", 93))

    def tearDown(self):
        if self.program.process and self.program.process.poll() is None:
            self.program.end()

    def start(self, completed, wish=None):
        path = self.world.data / "Vellumor/onboarding.json"
        path.write_text(json.dumps({"schemaVersion": 1, "completedVersion": completed}))
        self.program.start_with_item(VELLUMOR_ONBOARDING=wish)

    def flow(self):
        return wait_until(lambda: self.window(TITLE), "the first-run flow")

    def completed(self):
        return json.loads((self.world.data / "Vellumor/onboarding.json").read_text())["completedVersion"]

    def preference(self, name):
        return json.loads((self.world.data / "Vellumor/preferences.json").read_text()).get(name)

    def assertNoFlow(self):
        self.assertTrue(stays(lambda: not self.window(TITLE), SETTLED), "the first-run flow is shown")

    def test_it_goes_through_its_steps_and_does_not_come_back(self):
        self.start(0)
        flow = self.flow()
        self.assertIn("Step 1 of 3", flow.texts())
        flow.press("Continue")
        wait_until(lambda: "Found 2 Claude accounts" in flow.texts(), "the accounts")
        flow.press("Back")
        wait_until(lambda: "Step 1 of 3" in flow.texts(), "the first step again")
        flow.press("Continue")
        wait_until(lambda: "Step 2 of 3" in flow.texts(), "the second step")
        flow.press("Continue")
        wait_until(lambda: "What Vellumor reads & sends" in flow.texts(), "the last step")
        flow.press("Use local cache only")
        wait_until(lambda: self.preference("localCacheOnly") is True, "the choice")
        flow.press("Use local cache only")
        wait_until(lambda: self.preference("localCacheOnly") is False, "the choice taken back")
        flow.press("Get Started")
        wait_until(lambda: not self.window(TITLE), "the end of the flow")
        wait_until(lambda: self.completed() == 1, "the note that it is over")
        self.program.end()
        self.program.start_with_item(VELLUMOR_ONBOARDING=None)
        self.assertNoFlow()

    def test_closed_by_its_button_it_comes_back(self):
        self.start(0)
        self.flow()
        self.key("alt+F4")
        wait_until(lambda: not self.window(TITLE), "the end of the flow")
        self.assertEqual(self.completed(), 0)
        self.program.end()
        self.program.start_with_item(VELLUMOR_ONBOARDING=None)
        self.flow()

    def test_the_variable_shows_it_and_leaves_it_out(self):
        self.start(1, "show")
        self.flow()
        self.program.end()
        self.start(0, "skip")
        self.assertNoFlow()


if __name__ == "__main__":
    unittest.main(verbosity=2)
