int OwnFunction() { return 1; }
