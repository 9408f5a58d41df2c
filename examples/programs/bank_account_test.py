# A small test suite that is run by unittest's own command line.
import unittest
from unittest import mock


class Account:
    def __init__(self, balance=0, notify=None):
        self.balance = balance
        self.notify = notify

    def withdraw(self, amount):
        if amount > self.balance:
            raise ValueError(f"only {self.balance} left")
        self.balance -= amount
        if self.notify:
            self.notify(self.balance)
        return self.balance


class AccountTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        print("suite begins")

    def setUp(self):
        self.account = Account(100)
        self.addCleanup(print, "done:", self._testMethodName)

    def test_withdraws_for_several_amounts(self):
        for amount, left in ((0, 100), (1, 99), (100, 0)):
            with self.subTest(amount=amount):
                self.assertEqual(Account(100).withdraw(amount), left)

    def test_refuses_more_than_there_is(self):
        with self.assertRaisesRegex(ValueError, "only 100 left"):
            self.account.withdraw(101)

    def test_tells_the_new_balance(self):
        self.account.notify = mock.Mock()
        self.account.withdraw(30)
        self.account.notify.assert_called_once_with(70)

    @unittest.skip("shows that skipping works")
    def test_skipped(self):
        self.fail("never runs")

    @unittest.expectedFailure
    def test_known_fault(self):
        self.assertEqual(self.account.withdraw(-1), 100)


if __name__ == "__main__":
    unittest.main(verbosity=2)
