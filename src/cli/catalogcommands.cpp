#include "cli/commands.h"
#include "cli/commandsession.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"

#include <cctype>
#include <iostream>

namespace cli
{

namespace
{
const char* const kAccountTypes[] = {
    "Company Credit Card", "Personal Credit Card", "Cash",
    "Direct Bill",         "Company Check",        "Personal Check"};

uint32_t ParseAccountType(const std::string& text)
{
    for (uint32_t i = 0; i < 6; ++i)
        if (SameText(text, kAccountTypes[i]) || text == std::to_string(i))
            return i;
    std::string accepted;
    for (uint32_t i = 0; i < 6; ++i)
        accepted += std::string(i ? ", " : "") + "\"" + kAccountTypes[i] + "\"";
    throw UsageError("--account-type must be one of " + accepted + " (or 0 to 5)");
}

// After a question answered No: a plain "nothing done", or an error when no answer
// could be had at all.
int NothingDone(Context& ctx, const char* what)
{
    if (ctx.prompter.Unanswered())
        throw CommandError(std::string(what) +
                           ": the question was not answered (run again with --yes or --no)");
    std::cout << what << "\n";
    return 0;
}

std::string NonEmptyName(const Args& args, size_t index)
{
    const std::string name = args.At(index, "NAME");
    const size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos)
        throw UsageError("NAME must not be empty");
    return name.substr(first);
}

int ActivityAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"rate"});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CActivity* a = s.Doc().AddActivity(NonEmptyName(args, 1));
    if (auto r = args.Option("rate"))
        a->m_rate = ParseNonNegative(*r, "--rate");
    s.Save();
    std::cout << "Added activity #" << a->m_id << " '" << a->m_name << "'\n";
    return 0;
}

int ActivityRename(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(3, 3, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CActivity* a = FindRecord(s.Doc().m_activities, args.At(1, "ACTIVITY"), "activity");
    a->m_name = NonEmptyName(args, 2);
    s.Save();
    std::cout << "Renamed activity #" << a->m_id << " to '" << a->m_name << "'\n";
    return 0;
}

int ActivityRemove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CActivity* a = FindRecord(s.Doc().m_activities, args.At(1, "ACTIVITY"), "activity");
    const std::string name = a->m_name;
    if (!s.Doc().DeleteActivity(a->m_id, ctx.prompter))
    {
        return NothingDone(ctx, "Nothing deleted");
    }
    s.Save();
    std::cout << "Deleted activity '" << name << "'\n";
    return 0;
}

int ActivityList(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    for (const auto& [id, a] : s.Doc().m_activities)
        std::cout << id << "\t" << a->m_name << "\n";
    return 0;
}

int ExpenseTypeAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CExpenseType* e = s.Doc().AddExpenseType(NonEmptyName(args, 1));
    s.Save();
    std::cout << "Added expense type #" << e->m_id << " '" << e->m_name << "'\n";
    return 0;
}

int ExpenseTypeRename(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(3, 3, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CExpenseType* e = FindRecord(s.Doc().m_expenseTypes, args.At(1, "TYPE"), "expense type");
    if (e->m_id == CExpenseType::kMileageId &&
        ctx.prompter.AskYesNo(platform::LoadString(41024), platform::Icon::question) !=
            platform::Answer::yes)
    {
        return NothingDone(ctx, "Not renamed");
    }
    e->m_name = NonEmptyName(args, 2);
    s.Save();
    std::cout << "Renamed expense type #" << e->m_id << " to '" << e->m_name << "'\n";
    return 0;
}

int ExpenseTypeRemove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CExpenseType* e = FindRecord(s.Doc().m_expenseTypes, args.At(1, "TYPE"), "expense type");
    const std::string name = e->m_name;
    if (!s.Doc().DeleteExpenseType(e->m_id, ctx.prompter))
    {
        return NothingDone(ctx, "Nothing deleted");
    }
    s.Save();
    std::cout << "Deleted expense type '" << name << "'\n";
    return 0;
}

int ExpenseTypeList(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    for (const auto& [id, e] : s.Doc().m_expenseTypes)
        std::cout << id << "\t" << e->m_name
                  << (id == CExpenseType::kMileageId ? "\t(mileage)" : "") << "\n";
    return 0;
}

int PaymentMethodAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"account-number", "account-type"});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    const std::string name = NonEmptyName(args, 1);
    const uint32_t type =
        args.Option("account-type") ? ParseAccountType(*args.Option("account-type")) : 0;
    CPaymentMethod* p = s.Doc().AddPaymentMethod(name);
    p->m_accountType = type;
    if (auto n = args.Option("account-number"))
        p->m_accountNumber = *n;
    s.Save();
    std::cout << "Added payment method #" << p->m_id << " '" << p->m_name << "'\n";
    return 0;
}

int PaymentMethodRename(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(3, 3, {"account-number", "account-type"});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CPaymentMethod* p =
        FindRecord(s.Doc().m_paymentMethods, args.At(1, "METHOD"), "payment method");
    p->m_name = NonEmptyName(args, 2);
    if (auto t = args.Option("account-type"))
        p->m_accountType = ParseAccountType(*t);
    if (auto n = args.Option("account-number"))
        p->m_accountNumber = *n;
    s.Save();
    std::cout << "Renamed payment method #" << p->m_id << " to '" << p->m_name << "'\n";
    return 0;
}

int PaymentMethodRemove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CPaymentMethod* p =
        FindRecord(s.Doc().m_paymentMethods, args.At(1, "METHOD"), "payment method");
    const std::string name = p->m_name;
    if (!s.Doc().DeletePaymentMethod(p->m_id, ctx.prompter))
    {
        return NothingDone(ctx, "Nothing deleted");
    }
    s.Save();
    std::cout << "Deleted payment method '" << name << "'\n";
    return 0;
}

int PaymentMethodList(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    for (const auto& [id, p] : s.Doc().m_paymentMethods)
        std::cout << id << "\t" << p->m_name << "\t" << kAccountTypes[p->m_accountType % 6]
                  << (p->m_accountNumber.empty() ? "" : "\t" + p->m_accountNumber) << "\n";
    return 0;
}

const std::vector<std::string> kContactFields = {"first", "middle", "last",  "address",
                                                 "phone", "fax",    "email", "notes"};

void ApplyContactFields(const Args& args, CContact& c)
{
    std::string* fields[] = {&c.m_first, &c.m_middle, &c.m_last,  &c.m_address,
                             &c.m_phone, &c.m_fax,    &c.m_email, &c.m_notes};
    for (size_t i = 0; i < kContactFields.size(); ++i)
        if (auto v = args.Option(kContactFields[i]))
            *fields[i] = *v;
}

CContact* FindContact(const CTimeKeeperDoc& doc, const std::string& spec)
{
    const std::string digits = !spec.empty() && spec[0] == '#' ? spec.substr(1) : spec;
    if (!digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos)
        if (CContact* c = doc.GetContact(uint32_t(std::stoul(digits))))
            return c;
    CContact* found = nullptr;
    for (const auto& [id, c] : doc.m_contacts)
        if (SameText(c->GetDisplayName(), spec) || SameText(c->m_last, spec))
        {
            if (found)
                throw CommandError("several contacts match '" + spec + "' (use #id)");
            found = c.get();
        }
    if (!found)
        throw CommandError("there is no contact '" + spec + "'");
    return found;
}

int ContactAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, kContactFields);
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CContact probe;
    ApplyContactFields(args, probe);
    if (probe.m_first.empty() && probe.m_middle.empty() && probe.m_last.empty())
        throw CommandError(platform::LoadString(40019));
    CContact* c = s.Doc().AddContact();
    ApplyContactFields(args, *c);
    s.Save();
    std::cout << "Added contact #" << c->m_id << " '" << c->GetDisplayName() << "'\n";
    return 0;
}

int ContactRename(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, kContactFields);
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CContact* c = FindContact(s.Doc(), args.At(1, "CONTACT"));
    CContact probe = *c;
    ApplyContactFields(args, probe);
    if (probe.m_first.empty() && probe.m_middle.empty() && probe.m_last.empty())
        throw CommandError(platform::LoadString(40019));
    ApplyContactFields(args, *c);
    s.Save();
    std::cout << "Updated contact #" << c->m_id << " '" << c->GetDisplayName() << "'\n";
    return 0;
}

int ContactRemove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CContact* c = FindContact(s.Doc(), args.At(1, "CONTACT"));
    const std::string name = c->GetDisplayName();
    if (!s.Doc().DeleteContact(c->m_id, ctx.prompter))
    {
        return NothingDone(ctx, "Nothing deleted");
    }
    s.Save();
    std::cout << "Deleted contact '" << name << "'\n";
    return 0;
}

int ContactList(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    for (const auto& [id, c] : s.Doc().m_contacts)
        std::cout << id << "\t" << c->GetDisplayName()
                  << (c->m_email.empty() ? "" : "\t" + c->m_email) << "\n";
    return 0;
}
} // namespace

void RegisterCatalogCommands(CommandTable& table)
{
    table.Add({"activity add", "FILE NAME [--rate R]", "add an activity", ActivityAdd});
    table.Add({"activity rename", "FILE ACTIVITY NAME",
               "rename an activity (ACTIVITY: #id or name)", ActivityRename});
    table.Add({"activity rm", "FILE ACTIVITY",
               "delete an activity; its time entries become unassigned", ActivityRemove});
    table.Add({"activity list", "FILE", "list the activities", ActivityList});
    table.Add({"expense-type add", "FILE NAME", "add an expense type", ExpenseTypeAdd});
    table.Add(
        {"expense-type rename", "FILE TYPE NAME", "rename an expense type", ExpenseTypeRename});
    table.Add({"expense-type rm", "FILE TYPE", "delete an expense type", ExpenseTypeRemove});
    table.Add({"expense-type list", "FILE", "list the expense types", ExpenseTypeList});
    table.Add({"payment-method add", "FILE NAME [--account-number N] [--account-type TYPE]",
               "add a payment method", PaymentMethodAdd});
    table.Add({"payment-method rename",
               "FILE METHOD NAME [--account-number N] [--account-type TYPE]",
               "rename or change a payment method", PaymentMethodRename});
    table.Add({"payment-method rm", "FILE METHOD", "delete a payment method", PaymentMethodRemove});
    table.Add({"payment-method list", "FILE", "list the payment methods", PaymentMethodList});
    table.Add({"contact add",
               "FILE [--first F] [--middle M] [--last L] [--address A] [--phone P] [--fax F] "
               "[--email E] [--notes N]",
               "add a contact (a first, middle or last name is required)", ContactAdd});
    table.Add({"contact rename", "FILE CONTACT [--first F] [--middle M] [--last L] [...]",
               "change a contact's names or details", ContactRename});
    table.Add({"contact rm", "FILE CONTACT", "delete a contact", ContactRemove});
    table.Add({"contact list", "FILE", "list the contacts", ContactList});
}

} // namespace cli
