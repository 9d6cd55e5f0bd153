"""What `ferrule search` and `ferrule text` find on Windows, too."""
import unittest

import test_search
from wine import WindowsPlace

test_search.PLACE = WindowsPlace


class Search(test_search.Search):
    pass


if __name__ == "__main__":
    unittest.main()
