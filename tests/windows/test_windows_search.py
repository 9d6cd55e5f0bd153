"""What `ferrule search` and `ferrule text` find on Windows, too."""
import unittest

import test_search
from wine import WindowsPlace

test_search.PLACE = WindowsPlace
test_search.KILLED_AFTER = ()  # test_windows_kill.py does that here


class Search(test_search.Search):
    # They look into the folders of cache and settings, which Wine puts somewhere else, or name folders in a file of rules.
    test_twelve_rules_over_documents_find_what_another_reader_counts = None
    test_what_was_read_before_is_found_as_if_it_were_read_again = None
    test_a_cache_that_cannot_be_used_is_done_without = None
    test_a_copy_cut_off_before_it_was_announced_is_cleaned_up = None


if __name__ == "__main__":
    unittest.main()
