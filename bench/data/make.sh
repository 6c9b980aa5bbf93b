#!/bin/sh
# Makes utf8.pem and bmp.pem anew: certificates with Chinese names, as UTF8String and as BMPString, a root and
# what it issued. Their keys are thrown away.
set -eu
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# request FILE PLACE CITY COMPANY UNIT NAME: a configuration with one subject.
request() {
    cat >"$1" <<END
[req]
prompt = no
utf8 = yes
string_mask = $mask
distinguished_name = subject
x509_extensions = authority
[subject]
C = CN
ST = $2
L = $3
O = $4
OU = $5
CN = $6
[authority]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
[extensions]
basicConstraints = critical, CA:FALSE
keyUsage = critical, digitalSignature, keyEncipherment
extendedKeyUsage = serverAuth, clientAuth
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
subjectAltName = DNS:www.example.com
crlDistributionPoints = URI:http://crl.example.com/root.crl
END
}

# certificates MASK FILE
certificates() {
    mask=$1
    request "$work/root.cnf" 北京市 北京市 示例认证中心有限公司 证书部 示例根证书
    openssl req -x509 -config "$work/root.cnf" -newkey rsa:2048 -nodes -keyout "$work/root.key" -out "$work/root.pem" \
        -days 4000 -sha256
    cp "$work/root.pem" "$2"
    while read -r place city company unit name; do
        request "$work/leaf.cnf" "$place" "$city" "$company" "$unit" "$name"
        openssl req -batch -new -config "$work/leaf.cnf" -newkey rsa:2048 -nodes -keyout "$work/leaf.key" \
            -out "$work/leaf.req"
        openssl x509 -req -in "$work/leaf.req" -CA "$work/root.pem" -CAkey "$work/root.key" -CAcreateserial \
            -extfile "$work/leaf.cnf" -extensions extensions -days 3650 -sha256 >>"$2"
    done <<END
浙江省 杭州市 示例网络技术有限公司 研发中心 王小明
广东省 深圳市 示例科技股份有限公司 信息安全部 李华
上海市 上海市 示例银行股份有限公司 电子银行部 网上银行服务器
四川省 成都市 示例软件有限责任公司 技术支持部门 张伟
江苏省 南京市 示例大学 计算机科学与技术学院 陈静
湖北省 武汉市 示例医院 信息中心 电子病历签名
陕西省 西安市 示例物流集团有限公司 人力资源部 刘洋
END
}
certificates utf8only utf8.pem
certificates MASK:2050 bmp.pem # BMPString, and PrintableString for the country
