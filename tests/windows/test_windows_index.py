"""What `ferrule index` and the steps on an index do on Windows, too."""
import unittest

import test_index
from wine import WindowsPlace

test_index.PLACE = WindowsPlace


class Index(test_index.Index):
    # They kill, fill disks and change times in the way of the other system.
    test_kills_other_builders_and_a_full_disk_leave_the_former_index = None
    test_only_what_changed_is_read_again = None


if __name__ == "__main__":
    unittest.main()
