pytest_plugins = ["tavsim.pytest_fixture"]
