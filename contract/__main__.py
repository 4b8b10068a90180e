import sys

from qel_contract.cli import main

sys.exit(main())
