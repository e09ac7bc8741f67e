-- Quorvane Time & Expense team database, schema version 1.
--
-- The same text creates the schema on SQLite and on PostgreSQL (`qvx db schema` prints it).
-- Every document synced with `qvx db sync` is one row of `documents`; every other table
-- holds that document's records under its `document_id`, and a sync replaces them all at
-- once. Ids (`id`, `task_id`, ...) are the document's own: unique within one document.
-- There are no foreign keys: checking one for each of a million rows would cost more than
-- the rows themselves, and the program writes a document's records all together.
-- `qvx db rm` removes a document from every table.
-- Dates are ISO dates (YYYY-MM-DD), months YYYY-MM, times of day HH:MM (24:00 is the
-- end of the day). Amounts and rates are in the documents' currency.
-- docs/database.md describes every column.

CREATE TABLE schema_version (
    version INTEGER NOT NULL
);
INSERT INTO schema_version (version) VALUES (1);

CREATE TABLE documents (
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE,
    employee TEXT NOT NULL,
    source_path TEXT NOT NULL,
    file_version INTEGER NOT NULL,
    synced_at TEXT NOT NULL,
    fingerprint TEXT NOT NULL,
    mileage_rate DOUBLE PRECISION NOT NULL,
    task_count INTEGER NOT NULL,
    time_entry_count INTEGER NOT NULL,
    expense_count INTEGER NOT NULL,
    todo_count INTEGER NOT NULL
);

CREATE TABLE tasks (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    parent_id INTEGER,
    name TEXT NOT NULL,
    abbreviation TEXT NOT NULL,
    path TEXT NOT NULL,
    depth INTEGER NOT NULL,
    level INTEGER NOT NULL,
    level_name TEXT NOT NULL,
    client_id INTEGER,
    project_id INTEGER,
    inactive BOOLEAN NOT NULL,
    billing_task_id INTEGER NOT NULL,
    billable BOOLEAN NOT NULL,
    rate DOUBLE PRECISION NOT NULL,
    use_activity_rates BOOLEAN NOT NULL,
    overtime_multiplier DOUBLE PRECISION NOT NULL,
    task_code TEXT NOT NULL,
    contact_id INTEGER,
    hours_estimate DOUBLE PRECISION NOT NULL,
    cost_estimate DOUBLE PRECISION NOT NULL,
    notes TEXT NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE activity_rates (
    document_id INTEGER NOT NULL,
    task_id INTEGER NOT NULL,
    activity_id INTEGER NOT NULL,
    billable BOOLEAN NOT NULL,
    rate DOUBLE PRECISION NOT NULL,
    PRIMARY KEY (document_id, task_id, activity_id)
);

CREATE TABLE time_entries (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    task_id INTEGER NOT NULL,
    activity_id INTEGER,
    entry_date DATE NOT NULL,
    month TEXT NOT NULL,
    start_time TEXT NOT NULL,
    end_time TEXT,
    minutes INTEGER NOT NULL,
    hours DOUBLE PRECISION NOT NULL,
    note TEXT NOT NULL,
    overtime BOOLEAN NOT NULL,
    custom_billing BOOLEAN NOT NULL,
    billable BOOLEAN NOT NULL,
    rate DOUBLE PRECISION NOT NULL,
    amount DOUBLE PRECISION NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE expenses (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    task_id INTEGER NOT NULL,
    expense_date DATE NOT NULL,
    month TEXT NOT NULL,
    expense_type_id INTEGER,
    payment_method_id INTEGER,
    amount DOUBLE PRECISION NOT NULL,
    billable BOOLEAN NOT NULL,
    mileage BOOLEAN NOT NULL,
    distance DOUBLE PRECISION,
    number INTEGER,
    note TEXT NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE todos (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    task_id INTEGER NOT NULL,
    description TEXT NOT NULL,
    note TEXT NOT NULL,
    priority TEXT NOT NULL,
    due_date DATE,
    completed_date DATE,
    imported BOOLEAN NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE activities (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    name TEXT NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE expense_types (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    name TEXT NOT NULL,
    mileage BOOLEAN NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE payment_methods (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    name TEXT NOT NULL,
    account_number TEXT NOT NULL,
    account_type TEXT NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE contacts (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    display_name TEXT NOT NULL,
    first_name TEXT NOT NULL,
    middle_name TEXT NOT NULL,
    last_name TEXT NOT NULL,
    address TEXT NOT NULL,
    phone TEXT NOT NULL,
    fax TEXT NOT NULL,
    email TEXT NOT NULL,
    notes TEXT NOT NULL,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE reports (
    document_id INTEGER NOT NULL,
    id INTEGER NOT NULL,
    name TEXT NOT NULL,
    kind TEXT NOT NULL,
    date_range TEXT NOT NULL,
    start_date DATE,
    end_date DATE,
    summarize TEXT,
    time_frame TEXT,
    rollup BOOLEAN,
    show_totals BOOLEAN,
    show_empty_rows BOOLEAN NOT NULL,
    include_billable BOOLEAN NOT NULL,
    include_non_billable BOOLEAN NOT NULL,
    field_flags INTEGER NOT NULL,
    recipient TEXT,
    terms TEXT,
    tax_rate DOUBLE PRECISION,
    invoice_number INTEGER,
    PRIMARY KEY (document_id, id)
);

CREATE TABLE report_tasks (
    document_id INTEGER NOT NULL,
    report_id INTEGER NOT NULL,
    position INTEGER NOT NULL,
    task_id INTEGER NOT NULL,
    PRIMARY KEY (document_id, report_id, position)
);

-- Hours, billing amounts and expenses by employee, client, project and month. The
-- client is the task on the first level below the employee, the project the one on
-- the second; entries higher up have none. `amount` is the billing amount of all time
-- (billable or not), `billable_amount` that of billable time, as the Billing Summary
-- and the invoice add them up with and without non-billable entries.
CREATE VIEW monthly_totals AS
SELECT d.id AS document_id, d.name AS document, d.employee,
       t.client_id, c.name AS client, t.project_id, p.name AS project, x.month,
       SUM(x.hours) AS hours, SUM(x.billable_hours) AS billable_hours,
       SUM(x.amount) AS amount, SUM(x.billable_amount) AS billable_amount,
       SUM(x.expenses) AS expenses, SUM(x.billable_expenses) AS billable_expenses
FROM (
    SELECT document_id, task_id, month, hours,
           CASE WHEN billable THEN hours ELSE 0 END AS billable_hours,
           amount, CASE WHEN billable THEN amount ELSE 0 END AS billable_amount,
           CAST(0 AS DOUBLE PRECISION) AS expenses,
           CAST(0 AS DOUBLE PRECISION) AS billable_expenses
    FROM time_entries
    UNION ALL
    SELECT document_id, task_id, month,
           CAST(0 AS DOUBLE PRECISION), CAST(0 AS DOUBLE PRECISION),
           CAST(0 AS DOUBLE PRECISION), CAST(0 AS DOUBLE PRECISION),
           amount, CASE WHEN billable THEN amount ELSE 0 END
    FROM expenses
) x
JOIN documents d ON d.id = x.document_id
JOIN tasks t ON t.document_id = x.document_id AND t.id = x.task_id
LEFT JOIN tasks c ON c.document_id = t.document_id AND c.id = t.client_id
LEFT JOIN tasks p ON p.document_id = t.document_id AND p.id = t.project_id
GROUP BY d.id, d.name, d.employee, t.client_id, c.name, t.project_id, p.name, x.month;

-- Time that brings no money: entries that are not billable, and billable entries at a
-- rate of 0 (a task whose rate was never set).
CREATE VIEW unbilled_time AS
SELECT d.id AS document_id, d.name AS document, d.employee, t.path AS task,
       e.entry_date, e.start_time, e.end_time, e.hours, e.note,
       CASE WHEN e.billable THEN 'no rate' ELSE 'not billable' END AS reason
FROM time_entries e
JOIN documents d ON d.id = e.document_id
JOIN tasks t ON t.document_id = e.document_id AND t.id = e.task_id
WHERE NOT e.billable OR e.rate = 0;

-- Outstanding to-dos whose due date lies before today (the database's CURRENT_DATE:
-- SQLite's is the date in UTC, PostgreSQL's that of the session's time zone).
CREATE VIEW overdue_todos AS
SELECT d.id AS document_id, d.name AS document, d.employee, t.path AS task,
       o.description, o.priority, o.due_date, o.note
FROM todos o
JOIN documents d ON d.id = o.document_id
JOIN tasks t ON t.document_id = o.document_id AND t.id = o.task_id
WHERE o.completed_date IS NULL AND o.due_date < CURRENT_DATE;

-- Every time entry with the names a spreadsheet or a dashboard wants beside it.
CREATE VIEW time_detail AS
SELECT d.id AS document_id, d.name AS document, d.employee,
       c.name AS client, p.name AS project, t.path AS task, t.task_code, a.name AS activity,
       e.id AS entry_id, e.entry_date, e.month, e.start_time, e.end_time, e.minutes, e.hours,
       e.note, e.overtime, e.billable, e.rate, e.amount
FROM time_entries e
JOIN documents d ON d.id = e.document_id
JOIN tasks t ON t.document_id = e.document_id AND t.id = e.task_id
LEFT JOIN tasks c ON c.document_id = t.document_id AND c.id = t.client_id
LEFT JOIN tasks p ON p.document_id = t.document_id AND p.id = t.project_id
LEFT JOIN activities a ON a.document_id = e.document_id AND a.id = e.activity_id;
