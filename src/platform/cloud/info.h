#pragma once

#include "platform/cloud/cloud_type.h"
#include "platform/twbplatform_export.h"

#include <QList>
#include <QString>
#include <QUrl>

namespace TWL::Cloud::Info {

/// One choice a form offers: a label for the user and the code the back-end takes.
struct Choice
{
    QString label;
    QString code;
    bool operator==(const Choice& other) const { return label == other.label && code == other.code; }
};

/// What the console knows of a back-end beyond its type: default endpoints, regions, classes.
class TWBPLATFORM_EXPORT Base
{
public:
    explicit Base(Type type);
    virtual ~Base();
    Type type() const { return m_type; }

private:
    Type m_type;
};

/// The S3 family. Types without a fixed service (S3 Compatible, Minio) have an empty default endpoint.
class TWBPLATFORM_EXPORT AmazonS3Like : public Base
{
public:
    explicit AmazonS3Like(Type type);
    /// The service's endpoint with its scheme; empty where the user must give one.
    QUrl defaultEndpoint() const;
    /// A saved "Signature": 4 (AWS4) everywhere but where a service knows only AWS2.
    int defaultSignature() const;
    /// Regions a new bucket may be made in, in the order a form offers them; empty where the service has
    /// one region only.
    virtual QList<Choice> regions() const;
};

class TWBPLATFORM_EXPORT AmazonS3 final : public AmazonS3Like
{
public:
    explicit AmazonS3(Type type = TWL::Cloud::AmazonS3);
    QList<Choice> regions() const override;
};

class TWBPLATFORM_EXPORT AlibabaCloud final : public AmazonS3Like
{
public:
    AlibabaCloud();
    QList<Choice> regions() const override;
};

class TWBPLATFORM_EXPORT AzureBlob final : public Base
{
public:
    AzureBlob();
    QUrl defaultEndpoint() const;
    /// Kinds of storage account.
    QList<Choice> accountTypes() const;
    /// Who may read a new container: "private", "blob", "container".
    QList<Choice> accessType() const;
};

class TWBPLATFORM_EXPORT BackBlaze final : public Base
{
public:
    BackBlaze();
    QUrl defaultEndpoint() const;
    /// "allPrivate" or "allPublic".
    QList<Choice> containerAccessType() const;
};

/// Google Cloud Storage. Its addresses and the console's OAuth client may be replaced through the
/// environment, for a private deployment or a test provider on loopback:
/// TWB_GOOGLE_STORAGE_ENDPOINT (the storage's URL, scheme included), TWB_GOOGLE_OAUTH_PROVIDER (the base URL
/// under which the authorisation and token endpoints live), TWB_GOOGLE_OAUTH_CLIENT_ID and
/// TWB_GOOGLE_OAUTH_CLIENT_SECRET.
class TWBPLATFORM_EXPORT GoogleStorage final : public Base
{
public:
    GoogleStorage();
    QUrl defaultEndpoint() const;
    /// Whether defaultEndpoint() was replaced through the environment.
    static bool endpointOverridden();
    /// defaultEndpoint() as host and port: the S3 interface's endpoint, which keys' accounts do not store.
    QString endpointHost() const;
    /// The JSON API's root under a replaced defaultEndpoint(); empty while Google's own serves.
    QString jsonApiEndpoint() const;
    static QUrl oauthAuthorizationUrl();
    static QUrl oauthTokenUrl();
    /// The OAuth client of the installed application; empty when none is set up.
    static QString oauthClientId();
    static QString oauthClientSecret();
    /// What the installed application asks the user to allow.
    static QString oauthScope();
    QList<Choice> regions() const;
    /// Storage classes of a new bucket.
    QList<Choice> storageType() const;
};

/// The OpenStack-like back-ends but Google: Swift behind Keystone.
class TWBPLATFORM_EXPORT OpenStack final : public Base
{
public:
    explicit OpenStack(Type type);
    /// Authentication endpoints the provider publishes; empty where the user must give one.
    QList<Choice> endpoints() const;
};

/// Types with nothing beyond Base: FileSystem and SFTP.
class TWBPLATFORM_EXPORT Plain final : public Base
{
public:
    explicit Plain(Type type);
};

} // namespace TWL::Cloud::Info
